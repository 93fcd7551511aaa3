#include "ui/subclassed_window.h"

#include "ui/message.h"
#include "utils/exceptions.h"

#include <source_location>
#include <utility>

namespace ui {

subclassed_window::~subclassed_window() {
    detach();
}

void subclassed_window::attach(HWND window) {
    // What `window_proc` uses comes first, as messages may arrive from the last call on.
    window_ = window;
    next_ = reinterpret_cast<WNDPROC>(GetWindowLongPtrW(window, GWLP_WNDPROC));
    SetWindowLongPtrW(window, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(this));
    if (!SetWindowLongPtrW(window, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(&window_proc))) {
        window_ = nullptr;
        throw utils::system_error_exception(std::source_location::current().function_name(),
                                            "::SetWindowLongPtrW(window, GWLP_WNDPROC, proc)",
                                            GetLastError());
    }
}

void subclassed_window::detach() noexcept {
    if (const HWND window = std::exchange(window_, nullptr)) {
        SetWindowLongPtrW(window, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(next_));
        SetWindowLongPtrW(window, GWLP_USERDATA, 0);
    }
}

LRESULT subclassed_window::on_message(UINT message, WPARAM wparam, LPARAM lparam) {
    return CallWindowProcW(next_, window_, message, wparam, lparam);
}

LRESULT CALLBACK subclassed_window::window_proc(HWND window, UINT message, WPARAM wparam,
                                                LPARAM lparam) noexcept {
    auto* const self =
        reinterpret_cast<subclassed_window*>(GetWindowLongPtrW(window, GWLP_USERDATA));
    if (message == WM_NCDESTROY) {
        const WNDPROC next = self->next_;
        self->detach();
        return CallWindowProcW(next, window, message, wparam, lparam);
    }
    try {
        return self->on_message(message, wparam, lparam);
    } catch (...) {
        show_current_failure(window);
        return 0;
    }
}

} // namespace ui
