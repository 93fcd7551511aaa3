#include "companions/companion_window.h"

#include "companions/companion_program.h"
#include "companions/last_error.h"

namespace companions {

companion_window::companion_window(const wchar_t* class_name) {
    const HINSTANCE instance = GetModuleHandleW(nullptr);
    WNDCLASSEXW window_class{};
    window_class.cbSize = sizeof(window_class);
    window_class.lpfnWndProc = &window_proc;
    window_class.hInstance = instance;
    window_class.lpszClassName = class_name;
    if (!RegisterClassExW(&window_class)) {
        raise_last_error("::RegisterClassExW(&window_class)");
    }
    window_ = CreateWindowExW(WS_EX_TOOLWINDOW, class_name, nullptr, WS_POPUP, 0, 0, 0, 0, nullptr,
                              nullptr, instance, nullptr);
    if (!window_) {
        raise_last_error("::CreateWindowExW(WS_EX_TOOLWINDOW, class_name, ...)");
    }
    // Only now: until the constructor is done there is no derived object to call.
    SetWindowLongPtrW(window_, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(this));
}

companion_window::~companion_window() {
    if (window_) {
        SetWindowLongPtrW(window_, GWLP_USERDATA, 0);
        DestroyWindow(window_);
    }
}

LRESULT companion_window::on_message(UINT message, WPARAM wparam, LPARAM lparam) {
    switch (message) {
    case WM_QUERYENDSESSION:
        return TRUE;
    case WM_ENDSESSION:
        if (wparam) {
            DestroyWindow(window_);
        }
        return 0;
    case WM_DESTROY:
        PostQuitMessage(0);
        return 0;
    default:
        return DefWindowProcW(window_, message, wparam, lparam);
    }
}

LRESULT CALLBACK companion_window::window_proc(HWND window, UINT message, WPARAM wparam,
                                               LPARAM lparam) noexcept {
    auto* const self =
        reinterpret_cast<companion_window*>(GetWindowLongPtrW(window, GWLP_USERDATA));
    if (!self) {
        return DefWindowProcW(window, message, wparam, lparam);
    }
    if (message == WM_NCDESTROY) {
        SetWindowLongPtrW(window, GWLP_USERDATA, 0);
        self->window_ = nullptr;
        return DefWindowProcW(window, message, wparam, lparam);
    }
    try {
        return self->on_message(message, wparam, lparam);
    } catch (...) {
        show_current_failure();
        return 0;
    }
}

} // namespace companions
