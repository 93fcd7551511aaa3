#include "ui/multiline_edit.h"

namespace ui {

LRESULT multiline_edit::on_message(UINT message, WPARAM wparam, LPARAM lparam) {
    if (message != WM_GETDLGCODE) {
        return subclassed_window::on_message(message, wparam, lparam);
    }
    const auto* const key = reinterpret_cast<const MSG*>(lparam);
    const bool leaves = key && (key->wParam == VK_TAB || key->wParam == VK_ESCAPE);
    const LRESULT own = DLGC_WANTARROWS | DLGC_WANTCHARS | DLGC_HASSETSEL;
    return leaves ? own : own | DLGC_WANTALLKEYS;
}

} // namespace ui
