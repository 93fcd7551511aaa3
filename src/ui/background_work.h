/// Work that a window asks for and that may take long, such as requests to the store.
#pragma once

#include <windows.h>

#include <functional>

namespace ui {

/// Runs `body` on a thread of its own and waits for it, with the wait cursor, while the messages of
/// the calling thread go on. `window` is any window of the dialog or property sheet that waits: of
/// that nothing can be used but Cancel and what closes it.
///
/// True when `body` has returned; throws what it threw. False when the user closed the dialog
/// before: it closes when the caller is back in its message loop, and `body` runs on alone, with
/// nobody to hear how it ends. So `body` owns all that it touches, and touches no window. This
/// module stays loaded until it has ended.
///
/// Throws `utils::system_error_exception` when no thread can be had. Objects whose windows the
/// dialog holds must live until this returns, as they do below a modal dialog.
bool run_waiting(HWND window, std::function<void()> body);

} // namespace ui
