#include "ui/subclassed_window.h"

#include "ui/message.h"
#include "utils/exceptions.h"

#include <commctrl.h>

#include <source_location>
#include <utility>

namespace ui {

subclassed_window::~subclassed_window() {
    detach();
}

void subclassed_window::attach(HWND window) {
    // What `subclass_proc` uses comes first, as messages may arrive from the call on. The address
    // tells this layer from others of the same procedure.
    window_ = window;
    if (!SetWindowSubclass(window, &subclass_proc, reinterpret_cast<UINT_PTR>(this),
                           reinterpret_cast<DWORD_PTR>(this))) {
        window_ = nullptr;
        throw utils::system_error_exception(std::source_location::current().function_name(),
                                            "::SetWindowSubclass(window, proc, this, this)",
                                            GetLastError());
    }
}

void subclassed_window::detach() noexcept {
    if (const HWND window = std::exchange(window_, nullptr)) {
        RemoveWindowSubclass(window, &subclass_proc, reinterpret_cast<UINT_PTR>(this));
    }
}

LRESULT subclassed_window::on_message(UINT message, WPARAM wparam, LPARAM lparam) {
    return DefSubclassProc(window_, message, wparam, lparam);
}

LRESULT CALLBACK subclassed_window::subclass_proc(HWND window, UINT message, WPARAM wparam,
                                                  LPARAM lparam, UINT_PTR,
                                                  DWORD_PTR self_value) noexcept {
    auto* const self = reinterpret_cast<subclassed_window*>(self_value);
    if (message == WM_NCDESTROY) {
        self->detach();
        return DefSubclassProc(window, message, wparam, lparam);
    }
    try {
        return self->on_message(message, wparam, lparam);
    } catch (...) {
        show_current_failure(window);
        return 0;
    }
}

} // namespace ui
