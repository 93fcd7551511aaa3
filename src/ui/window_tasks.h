#pragma once

#include "utils/slim_lock.h"

#include <windows.h>

#include <deque>
#include <functional>

namespace ui {

/// What other threads hand to the thread of a window to be done there. The window may refuse it,
/// and is not waited for: a thread that works for a window may outlive it.
class window_tasks {
public:
    /// The thread of `window` answers `message` by `run`.
    window_tasks(HWND window, UINT message) noexcept : window_(window), message_(message) {}

    /// On any thread. False when the window takes nothing more.
    bool post(std::function<void()> task);
    /// On the window's thread: does what has been handed over until now, in its order. A task may
    /// run messages, and with them the tasks behind it.
    void run();
    /// On the window's thread: from now on everything is refused, and what waits is dropped.
    void close() noexcept;

private:
    std::function<void()> take();

    const HWND window_;
    const UINT message_;
    /// Guards what follows.
    utils::slim_lock lock_;
    std::deque<std::function<void()>> tasks_;
    bool closed_ = false;
};

} // namespace ui
