#pragma once

#include <windows.h>

namespace ui {

/// Stands before the window procedure of one control. Several may stand before the same control;
/// the one that came last is asked first, and what it leaves alone goes on to the others. It lets
/// go when the window or the object ends, whichever is first. An object belongs to the thread of
/// its window.
class subclassed_window {
public:
    subclassed_window() = default;
    subclassed_window(const subclassed_window&) = delete;
    subclassed_window& operator=(const subclassed_window&) = delete;
    virtual ~subclassed_window();

    /// Null before `attach` and after the end of the window.
    HWND handle() const noexcept { return window_; }

protected:
    /// Throws `system_error_exception`.
    void attach(HWND window);

    /// Answers a message. What it throws is shown to the user. Overriders pass on to this what
    /// they do not handle.
    virtual LRESULT on_message(UINT message, WPARAM wparam, LPARAM lparam);

private:
    static LRESULT CALLBACK subclass_proc(HWND window, UINT message, WPARAM wparam, LPARAM lparam,
                                          UINT_PTR id, DWORD_PTR self) noexcept;

    void detach() noexcept;

    HWND window_ = nullptr;
};

} // namespace ui
