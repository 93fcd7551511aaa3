#include "ui/panel_keys.h"

namespace ui {

namespace {

bool is_push_button(HWND control) {
    return SendMessageW(control, WM_GETDLGCODE, 0, 0) & (DLGC_DEFPUSHBUTTON | DLGC_UNDEFPUSHBUTTON);
}

bool is_panel_key(WPARAM key) {
    return key == VK_RETURN || key == VK_ESCAPE;
}

} // namespace

void panel_keys::attach(HWND panel, int default_id) {
    for (HWND control = GetWindow(panel, GW_CHILD); control;
         control = GetWindow(control, GW_HWNDNEXT)) {
        if (GetWindowLongPtrW(control, GWL_STYLE) & WS_TABSTOP) {
            filters_.emplace_front(control, default_id);
        }
    }
}

panel_keys::key_filter::key_filter(HWND control, int default_id)
    : enter_id_(is_push_button(control) ? GetDlgCtrlID(control) : default_id) {
    attach(control);
}

LRESULT panel_keys::key_filter::on_message(UINT message, WPARAM wparam, LPARAM lparam) {
    switch (message) {
    case WM_GETDLGCODE: {
        const LRESULT code = subclassed_window::on_message(message, wparam, lparam);
        const auto* const key = reinterpret_cast<const MSG*>(lparam);
        return key && is_panel_key(key->wParam) ? code | DLGC_WANTMESSAGE : code;
    }
    case WM_KEYDOWN:
        if (is_panel_key(wparam)) {
            press(wparam == VK_RETURN ? enter_id_ : IDCANCEL);
            return 0;
        }
        break;
    case WM_CHAR:
        // A field beeps at these two.
        if (is_panel_key(wparam)) {
            return 0;
        }
        break;
    default:
        break;
    }
    return subclassed_window::on_message(message, wparam, lparam);
}

void panel_keys::key_filter::press(int id) {
    const HWND panel = GetParent(handle());
    SendMessageW(panel, WM_COMMAND, MAKEWPARAM(id, BN_CLICKED),
                 reinterpret_cast<LPARAM>(GetDlgItem(panel, id)));
}

} // namespace ui
