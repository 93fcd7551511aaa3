#include "dialogs/properties/page.h"

namespace dialogs {

void CPropertiesPageDlg::create_in(HWND tab_control, POINT place) {
    create(tab_control);
    SetWindowPos(handle(), HWND_TOP, place.x, place.y, 0, 0, SWP_NOSIZE | SWP_NOACTIVATE);
}

std::optional<LRESULT> CPropertiesPageDlg::on_message(UINT message, WPARAM wparam, LPARAM lparam) {
    const HBRUSH brush = m_dialog.get_theme_brush();
    if (!brush || (message != WM_CTLCOLORSTATIC && message != WM_CTLCOLORDLG)) {
        return std::nullopt;
    }
    // The pattern begins at the tab control, not at the window that is painted.
    const auto dc = reinterpret_cast<HDC>(wparam);
    POINT origin{};
    MapWindowPoints(reinterpret_cast<HWND>(lparam), GetParent(handle()), &origin, 1);
    // A copy of the background is drawn with its left upper corner elsewhere.
    POINT shift{};
    GetWindowOrgEx(dc, &shift);
    SetBrushOrgEx(dc, -origin.x - shift.x, -origin.y - shift.y, nullptr);
    SetBkMode(dc, TRANSPARENT);
    return reinterpret_cast<LRESULT>(brush);
}

} // namespace dialogs
