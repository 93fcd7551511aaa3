#include "ui/url_static.h"

#include "utils/exceptions.h"
#include "utils/module.h"

#include <windowsx.h>

#include <shellapi.h>

#include <source_location>

namespace ui {

namespace {

/// Visible, a child, and told of by the mouse. The Tab key's mark comes later.
constexpr DWORD link_style = WS_CHILD | WS_VISIBLE | SS_NOTIFY;

/// The font of the platform's controls, underlined.
HFONT create_link_font() {
    LOGFONTW font{};
    GetObjectW(GetStockObject(DEFAULT_GUI_FONT), sizeof(font), &font);
    font.lfUnderline = TRUE;
    return CreateFontIndirectW(&font);
}

void open(HWND owner, const std::wstring& target) {
    ShellExecuteW(owner, L"open", target.c_str(), nullptr, nullptr, SW_SHOWNORMAL);
}

} // namespace

void CUrlStatic::create(HWND parent, int id, const RECT& rect, const std::wstring& label,
                        link_mode mode, const std::wstring& url, COLORREF color) {
    m_mode = mode;
    m_label = label;
    m_url = url;
    m_color = color;
    m_font.reset(create_link_font());
    const HWND window = CreateWindowExW(
        0, L"STATIC", label.c_str(), link_style | WS_TABSTOP, rect.left, rect.top,
        rect.right - rect.left, rect.bottom - rect.top, parent,
        reinterpret_cast<HMENU>(static_cast<INT_PTR>(id)), utils::own_module(), nullptr);
    if (!window) {
        throw utils::system_error_exception(std::source_location::current().function_name(),
                                            "::CreateWindowExW(0, L\"STATIC\", label, ...)",
                                            GetLastError());
    }
    attach(window);
    copy_background();
}

void CUrlStatic::copy_background() {
    const HWND parent = GetParent(handle());
    RECT rect{};
    GetWindowRect(handle(), &rect);
    MapWindowPoints(nullptr, parent, reinterpret_cast<POINT*>(&rect), 2);
    const HDC screen = GetDC(nullptr);
    const unique_memory_dc memory(CreateCompatibleDC(screen));
    m_background.reset(
        CreateCompatibleBitmap(screen, rect.right - rect.left, rect.bottom - rect.top));
    ReleaseDC(nullptr, screen);
    const selected_object selected(memory.get(), m_background.get());
    // The parent may not be visible yet, so it draws itself into the copy.
    SetWindowOrgEx(memory.get(), rect.left, rect.top, nullptr);
    const auto dc = reinterpret_cast<WPARAM>(memory.get());
    SendMessageW(parent, WM_ERASEBKGND, dc, 0);
    SendMessageW(parent, WM_PRINTCLIENT, dc, PRF_CLIENT);
}

LRESULT CUrlStatic::on_message(UINT message, WPARAM wparam, LPARAM lparam) {
    switch (message) {
    case WM_GETDLGCODE: {
        // Enter would press the dialog's default button otherwise.
        const auto* const key = reinterpret_cast<const MSG*>(lparam);
        return key && key->wParam == VK_RETURN ? DLGC_WANTMESSAGE : 0;
    }
    case WM_KEYDOWN:
        if (wparam == VK_RETURN || wparam == VK_SPACE) {
            click();
            return 0;
        }
        break;
    case WM_LBUTTONDOWN:
        SetFocus(handle());
        SetCapture(handle());
        return 0;
    case WM_LBUTTONUP: {
        RECT client{};
        GetClientRect(handle(), &client);
        if (GetCapture() == handle()) {
            ReleaseCapture();
            if (PtInRect(&client, {GET_X_LPARAM(lparam), GET_Y_LPARAM(lparam)})) {
                click();
            }
        }
        return 0;
    }
    case WM_SETCURSOR:
        SetCursor(LoadCursorW(nullptr, IDC_HAND));
        return TRUE;
    case WM_MOVE:
        // The copy is of another place.
        copy_background();
        InvalidateRect(handle(), nullptr, FALSE);
        break;
    case WM_SETFOCUS:
    case WM_KILLFOCUS:
    case WM_UPDATEUISTATE:
        InvalidateRect(handle(), nullptr, FALSE);
        break;
    case WM_ERASEBKGND:
        return TRUE;
    case WM_PRINTCLIENT:
        paint(reinterpret_cast<HDC>(wparam));
        return 0;
    case WM_PAINT: {
        PAINTSTRUCT area;
        paint(BeginPaint(handle(), &area));
        EndPaint(handle(), &area);
        return 0;
    }
    default:
        break;
    }
    return subclassed_window::on_message(message, wparam, lparam);
}

void CUrlStatic::paint(HDC dc) {
    RECT client{};
    GetClientRect(handle(), &client);
    const unique_memory_dc memory(CreateCompatibleDC(dc));
    const selected_object background(memory.get(), m_background.get());
    BitBlt(dc, 0, 0, client.right, client.bottom, memory.get(), 0, 0, SRCCOPY);

    const selected_object font(dc, m_font.get());
    SetTextColor(dc, m_color);
    SetBkMode(dc, TRANSPARENT);
    const auto length = static_cast<int>(m_label.size());
    constexpr UINT format = DT_LEFT | DT_TOP | DT_SINGLELINE | DT_NOPREFIX;
    DrawTextW(dc, m_label.c_str(), length, &client, format);
    const LRESULT hidden = SendMessageW(handle(), WM_QUERYUISTATE, 0, 0);
    if (GetFocus() == handle() && !(hidden & UISF_HIDEFOCUS)) {
        DrawTextW(dc, m_label.c_str(), length, &client, format | DT_CALCRECT);
        SetTextColor(dc, GetSysColor(COLOR_BTNTEXT));
        DrawFocusRect(dc, &client);
    }
}

void CUrlStatic::click() {
    switch (m_mode) {
    case link_mode::tell_parent:
        SendMessageW(GetParent(handle()), WM_LINK_CLICKED, 0, 0);
        break;
    case link_mode::open_url:
    case link_mode::write_mail:
        if (!m_url.empty()) {
            open(handle(), m_mode == link_mode::open_url ? m_url : L"mailto:" + m_url);
        }
        break;
    }
}

} // namespace ui
