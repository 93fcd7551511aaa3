#include "ui/dialog.h"

#include "ui/message.h"
#include "ui/visual_styles.h"
#include "utils/exceptions.h"
#include "utils/module.h"

#include <source_location>
#include <utility>

namespace ui {

namespace {

/// For these messages the platform takes the answer from the dialog procedure itself.
bool is_answered_directly(UINT message) {
    switch (message) {
    case WM_CTLCOLORBTN:
    case WM_CTLCOLORDLG:
    case WM_CTLCOLOREDIT:
    case WM_CTLCOLORLISTBOX:
    case WM_CTLCOLORSCROLLBAR:
    case WM_CTLCOLORSTATIC:
    case WM_CHARTOITEM:
    case WM_COMPAREITEM:
    case WM_QUERYDRAGICON:
    case WM_VKEYTOITEM:
        return true;
    default:
        return false;
    }
}

} // namespace

dialog::~dialog() {
    if (const HWND window = std::exchange(window_, nullptr)) {
        SetWindowLongPtrW(window, DWLP_USER, 0);
        DestroyWindow(window);
    }
}

void dialog::destroy() noexcept {
    if (window_) {
        DestroyWindow(window_);
    }
}

INT_PTR dialog::do_modal(HWND owner) {
    const visual_styles styles;
    const INT_PTR result = DialogBoxParamW(utils::own_module(), MAKEINTRESOURCEW(resource_), owner,
                                           &dialog_proc, reinterpret_cast<LPARAM>(this));
    check_creation(result != -1, "::DialogBoxParamW(own_module(), resource, owner, proc, this)");
    return result;
}

void dialog::create(HWND parent) {
    const visual_styles styles;
    const HWND window = CreateDialogParamW(utils::own_module(), MAKEINTRESOURCEW(resource_), parent,
                                           &dialog_proc, reinterpret_cast<LPARAM>(this));
    if (init_failure_) {
        DestroyWindow(window);
    }
    check_creation(window != nullptr,
                   "::CreateDialogParamW(own_module(), resource, parent, proc, this)");
}

void dialog::check_creation(bool created, const char* call) {
    const DWORD error = GetLastError();
    if (init_failure_) {
        std::rethrow_exception(std::exchange(init_failure_, nullptr));
    }
    if (!created) {
        throw utils::system_error_exception(std::source_location::current().function_name(), call,
                                            error);
    }
}

std::wstring dialog::get_text(int id) const {
    const HWND window = control(id);
    std::wstring text(static_cast<std::size_t>(GetWindowTextLengthW(window)) + 1, L'\0');
    // The length that was told first may be too large.
    const int length = GetWindowTextW(window, text.data(), static_cast<int>(text.size()));
    text.resize(static_cast<std::size_t>(length));
    return text;
}

void dialog::attach(HWND window) noexcept {
    window_ = window;
    SetWindowLongPtrW(window, DWLP_USER, reinterpret_cast<LONG_PTR>(this));
}

INT_PTR dialog::init(HWND window) noexcept {
    attach(window);
    try {
        return on_init();
    } catch (...) {
        // It goes to the caller of `do_modal` or `create`, and no window comes up.
        init_failure_ = std::current_exception();
        EndDialog(window, IDABORT);
        return FALSE;
    }
}

INT_PTR dialog::dispatch(UINT message, WPARAM wparam, LPARAM lparam) {
    if (message == WM_COMMAND) {
        return on_command(LOWORD(wparam), HIWORD(wparam));
    }
    const std::optional<LRESULT> answer = on_message(message, wparam, lparam);
    if (!answer) {
        return FALSE;
    }
    if (is_answered_directly(message)) {
        return *answer;
    }
    SetWindowLongPtrW(window_, DWLP_MSGRESULT, *answer);
    return TRUE;
}

INT_PTR CALLBACK dialog::dialog_proc(HWND window, UINT message, WPARAM wparam,
                                     LPARAM lparam) noexcept {
    if (message == WM_INITDIALOG) {
        return reinterpret_cast<dialog*>(lparam)->init(window);
    }
    auto* const self = reinterpret_cast<dialog*>(GetWindowLongPtrW(window, DWLP_USER));
    // Some messages come before the first one, WM_SETFONT among them.
    if (!self) {
        return FALSE;
    }
    if (message == WM_NCDESTROY) {
        SetWindowLongPtrW(window, DWLP_USER, 0);
        self->window_ = nullptr;
        return FALSE;
    }
    try {
        return self->dispatch(message, wparam, lparam);
    } catch (...) {
        show_current_failure(window);
        return TRUE;
    }
}

} // namespace ui
