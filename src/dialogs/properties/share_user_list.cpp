#include "dialogs/properties/share_user_list.h"

#include "ui/placement.h"

#include <windowsx.h>

#include <memory>

namespace dialogs {

namespace {

constexpr int over_link = 128;
constexpr COLORREF link_color = 0xC00000;
/// In pixels of the usual dialog font.
constexpr std::array<int, CShareUserList::column_count> column_widths{165, 33, 55, 70};
constexpr int links_column = 3;
constexpr int cell_margin = 4;

constexpr auto change_text = L"CH";
constexpr auto between_text = L" / ";
constexpr auto remove_text = L"REM";
/// For those who do not see the mark that is drawn.
constexpr wchar_t mark_text[] = L"\x2713";

constexpr UINT one_line = DT_SINGLELINE | DT_VCENTER;

int mode_column(const vfs::directory::sharewith_item& user) {
    return user.share_mode == 0 ? 1 : user.share_mode == 1 ? 2 : 0;
}

/// The font in which the platform itself draws check marks, in the size of a dialog's font.
HFONT create_mark_font(HFONT like) {
    LOGFONTW model{};
    GetObjectW(like ? like : GetStockObject(DEFAULT_GUI_FONT), sizeof(model), &model);
    return CreateFontW(model.lfHeight * 4 / 3, 0, 0, 0, FW_NORMAL, FALSE, FALSE, FALSE,
                       SYMBOL_CHARSET, OUT_DEFAULT_PRECIS, CLIP_DEFAULT_PRECIS, DEFAULT_QUALITY,
                       DEFAULT_PITCH, L"Marlett");
}

HFONT font_of(HWND window) {
    return reinterpret_cast<HFONT>(SendMessageW(window, WM_GETFONT, 0, 0));
}

/// The rectangle of a text that begins at `left` in the middle of `cell`.
RECT measure(HDC dc, const wchar_t* text, LONG left, const RECT& cell) {
    RECT place{left, cell.top, left, cell.bottom};
    DrawTextW(dc, text, -1, &place, DT_CALCRECT | one_line);
    const LONG height = place.bottom - place.top;
    place.top = cell.top + (cell.bottom - cell.top - height) / 2;
    place.bottom = place.top + height;
    return place;
}

/// A device context of a window, with the window's font.
class window_dc {
public:
    explicit window_dc(HWND window) noexcept
        : window_(window), dc_(GetDC(window)), old_(SelectObject(dc_, font_of(window))) {}

    window_dc(const window_dc&) = delete;
    window_dc& operator=(const window_dc&) = delete;

    ~window_dc() {
        SelectObject(dc_, old_);
        ReleaseDC(window_, dc_);
    }

    HDC get() const noexcept { return dc_; }

private:
    HWND window_;
    HDC dc_;
    HGDIOBJ old_;
};

} // namespace

void CShareUserList::attach(HWND list, const std::array<std::wstring, column_count>& titles) {
    subclassed_window::attach(list);
    m_mark_font.reset(create_mark_font(font_of(list)));
    ListView_SetExtendedListViewStyle(list, LVS_EX_FULLROWSELECT);
    for (std::size_t i = 0; i < column_count; ++i) {
        std::wstring title = titles[i];
        LVCOLUMNW column{};
        column.mask = LVCF_TEXT | LVCF_WIDTH;
        column.pszText = title.data();
        column.cx = static_cast<int>(
            ui::scaled_to_font(GetParent(list), {0, 0, column_widths[i], 0}).right);
        SendMessageW(list, LVM_INSERTCOLUMNW, i, reinterpret_cast<LPARAM>(&column));
    }
}

void CShareUserList::clear() noexcept {
    m_pressed.reset();
    ListView_DeleteAllItems(handle());
}

void CShareUserList::add(const vfs::directory::sharewith_item& user) {
    auto owned = std::make_unique<vfs::directory::sharewith_item>(user);
    LVITEMW item{};
    item.mask = LVIF_TEXT | LVIF_PARAM;
    item.iItem = ListView_GetItemCount(handle());
    item.pszText = owned->name.data();
    item.lParam = reinterpret_cast<LPARAM>(owned.get());
    const auto row = static_cast<int>(
        SendMessageW(handle(), LVM_INSERTITEMW, 0, reinterpret_cast<LPARAM>(&item)));
    if (row < 0) {
        return;
    }
    static_cast<void>(owned.release());
    const auto set_cell = [&](int column, std::wstring text) {
        LVITEMW part{};
        part.iSubItem = column;
        part.pszText = text.data();
        SendMessageW(handle(), LVM_SETITEMTEXTW, static_cast<WPARAM>(row),
                     reinterpret_cast<LPARAM>(&part));
    };
    if (const int column = mode_column(user)) {
        set_cell(column, mark_text);
    }
    set_cell(links_column, std::wstring(change_text) + between_text + remove_text);
}

const vfs::directory::sharewith_item* CShareUserList::get_user(int row) const noexcept {
    LVITEMW item{};
    item.mask = LVIF_PARAM;
    item.iItem = row;
    return row >= 0 && SendMessageW(handle(), LVM_GETITEMW, 0, reinterpret_cast<LPARAM>(&item))
               ? reinterpret_cast<const vfs::directory::sharewith_item*>(item.lParam)
               : nullptr;
}

std::optional<LRESULT> CShareUserList::on_notify(const NMHDR& notice) {
    switch (notice.code) {
    case LVN_DELETEITEM: {
        const LPARAM data = reinterpret_cast<const NMLISTVIEW&>(notice).lParam;
        const std::unique_ptr<vfs::directory::sharewith_item> user(
            reinterpret_cast<vfs::directory::sharewith_item*>(data));
        return 0;
    }
    case NM_CUSTOMDRAW:
        return draw(reinterpret_cast<const NMLVCUSTOMDRAW&>(notice));
    default:
        return std::nullopt;
    }
}

LRESULT CShareUserList::draw(const NMLVCUSTOMDRAW& request) const {
    switch (request.nmcd.dwDrawStage) {
    case CDDS_PREPAINT:
        return CDRF_NOTIFYITEMDRAW;
    case CDDS_ITEMPREPAINT:
        draw_row(request.nmcd.hdc, static_cast<int>(request.nmcd.dwItemSpec));
        return CDRF_SKIPDEFAULT;
    default:
        return CDRF_DODEFAULT;
    }
}

void CShareUserList::draw_row(HDC dc, int row) const {
    const auto* const user = get_user(row);
    RECT bounds{};
    ListView_GetItemRect(handle(), row, &bounds, LVIR_BOUNDS);
    // The links keep their colour, so that a chosen row has a light ground.
    const bool chosen = ListView_GetItemState(handle(), row, LVIS_SELECTED) != 0;
    FillRect(dc, &bounds, GetSysColorBrush(chosen ? COLOR_BTNFACE : COLOR_WINDOW));
    if (!user) {
        return;
    }
    const ui::selected_object font(dc, font_of(handle()));
    SetBkMode(dc, TRANSPARENT);
    SetTextColor(dc, GetSysColor(chosen ? COLOR_BTNTEXT : COLOR_WINDOWTEXT));
    RECT name = cell(row, 0);
    name.left += cell_margin;
    DrawTextW(dc, user->name.c_str(), static_cast<int>(user->name.size()), &name,
              one_line | DT_NOPREFIX | DT_END_ELLIPSIS);
    if (const int column = mode_column(*user)) {
        draw_mark(dc, cell(row, column));
    }
    draw_links(dc, row);
}

void CShareUserList::draw_mark(HDC dc, const RECT& cell) const {
    const ui::selected_object font(dc, m_mark_font.get());
    RECT place = cell;
    DrawTextW(dc, L"a", 1, &place, one_line | DT_CENTER);
}

void CShareUserList::draw_links(HDC dc, int row) const {
    link_places places = measure_links(dc, row);
    DrawTextW(dc, between_text, -1, &places.between, one_line);
    SetTextColor(dc, link_color);
    DrawTextW(dc, change_text, -1, &places.change, one_line);
    DrawTextW(dc, remove_text, -1, &places.remove, one_line);
    if (GetFocus() == handle() && row == focused_row()) {
        SetTextColor(dc, GetSysColor(COLOR_BTNTEXT));
        DrawFocusRect(dc, m_focused_link == link::change ? &places.change : &places.remove);
    }
}

CShareUserList::link_places CShareUserList::measure_links(HDC dc, int row) const {
    const RECT column = cell(row, links_column);
    const RECT change = measure(dc, change_text, column.left + cell_margin, column);
    const RECT between = measure(dc, between_text, change.right, column);
    return {change, between, measure(dc, remove_text, between.right, column)};
}

RECT CShareUserList::cell(int row, int column) const noexcept {
    RECT place{};
    ListView_GetSubItemRect(handle(), row, column, column == 0 ? LVIR_LABEL : LVIR_BOUNDS, &place);
    return place;
}

std::optional<CShareUserList::link_at> CShareUserList::find_link(POINT point) const {
    LVHITTESTINFO hit{};
    hit.pt = point;
    const int row = ListView_SubItemHitTest(handle(), &hit);
    if (row < 0 || hit.iSubItem != links_column) {
        return std::nullopt;
    }
    const window_dc dc(handle());
    const link_places places = measure_links(dc.get(), row);
    if (PtInRect(&places.change, point)) {
        return link_at{row, link::change};
    }
    if (PtInRect(&places.remove, point)) {
        return link_at{row, link::remove};
    }
    return std::nullopt;
}

LRESULT CShareUserList::on_message(UINT message, WPARAM wparam, LPARAM lparam) {
    switch (message) {
    case WM_MOUSEMOVE:
    case WM_LBUTTONDOWN:
    case WM_LBUTTONDBLCLK:
    case WM_LBUTTONUP:
        if (on_mouse(message, {GET_X_LPARAM(lparam), GET_Y_LPARAM(lparam)})) {
            return 0;
        }
        break;
    case WM_CAPTURECHANGED:
        m_pressed.reset();
        break;
    case WM_SETCURSOR:
        if (LOWORD(lparam) == HTCLIENT && m_cursor_state == over_link) {
            SetCursor(LoadCursorW(nullptr, IDC_HAND));
            return TRUE;
        }
        break;
    case WM_GETDLGCODE: {
        const LRESULT code = subclassed_window::on_message(message, wparam, lparam);
        const auto* const key = reinterpret_cast<const MSG*>(lparam);
        return key && key->wParam == VK_RETURN ? code | DLGC_WANTMESSAGE : code;
    }
    case WM_KEYDOWN:
        if (on_key(wparam)) {
            return 0;
        }
        break;
    case WM_CHAR:
        // Otherwise the list looks for names that begin so.
        if (wparam == VK_SPACE || wparam == VK_RETURN) {
            return 0;
        }
        break;
    case WM_SETFOCUS:
        if (focused_row() < 0) {
            focus_row(0);
        }
        InvalidateRect(handle(), nullptr, FALSE);
        break;
    case WM_KILLFOCUS:
        InvalidateRect(handle(), nullptr, FALSE);
        break;
    default:
        break;
    }
    return subclassed_window::on_message(message, wparam, lparam);
}

bool CShareUserList::on_mouse(UINT message, POINT point) {
    const std::optional<link_at> over = find_link(point);
    m_cursor_state = over ? over_link : 0;
    if (over) {
        SetCursor(LoadCursorW(nullptr, IDC_HAND));
    }
    switch (message) {
    case WM_LBUTTONDOWN:
    case WM_LBUTTONDBLCLK:
        if (!over) {
            return false;
        }
        // Not the list's own way, which waits for a drag.
        SetFocus(handle());
        focus_row(over->row);
        SetCapture(handle());
        m_pressed = over;
        return true;
    case WM_LBUTTONUP: {
        const std::optional<link_at> pressed = m_pressed;
        if (!pressed) {
            return false;
        }
        ReleaseCapture();
        if (over == pressed) {
            click(*pressed);
        }
        return true;
    }
    default:
        return false;
    }
}

bool CShareUserList::on_key(WPARAM key) {
    const int row = focused_row();
    switch (key) {
    case VK_LEFT:
    case VK_RIGHT:
        m_focused_link = key == VK_LEFT ? link::change : link::remove;
        InvalidateRect(handle(), nullptr, FALSE);
        return true;
    case VK_RETURN:
    case VK_SPACE:
        click({row, m_focused_link});
        return true;
    case VK_DELETE:
        click({row, link::remove});
        return true;
    default:
        return false;
    }
}

int CShareUserList::focused_row() const noexcept {
    return ListView_GetNextItem(handle(), -1, LVNI_FOCUSED);
}

void CShareUserList::focus_row(int row) const noexcept {
    ListView_SetItemState(handle(), row, LVIS_FOCUSED | LVIS_SELECTED,
                          LVIS_FOCUSED | LVIS_SELECTED);
}

void CShareUserList::click(const link_at& where) const noexcept {
    if (where.row >= 0) {
        SendMessageW(GetParent(handle()),
                     where.part == link::change ? WM_CHANGE_USER : WM_REMOVE_USER, 0, where.row);
    }
}

} // namespace dialogs
