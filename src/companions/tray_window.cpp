#include "companions/tray_window.h"

#include "companions/companion_program.h"
#include "companions/drive.h"
#include "companions/identity.h"
#include "companions/last_error.h"
#include "companions/tray_ids.h"
#include "utils/unique_handle.h"

#include <windowsx.h>

#include <string>

namespace companions {

namespace {

struct menu_traits {
    using pointer = HMENU;

    static pointer none() noexcept { return nullptr; }

    static void close(pointer value) noexcept { DestroyMenu(value); }
};

using unique_menu = utils::unique_resource<menu_traits>;

/// In the size that the notification area shows. The platform keeps shared icons until the end.
HICON load_icon() {
    const auto icon = static_cast<HICON>(
        LoadImageW(GetModuleHandleW(nullptr), MAKEINTRESOURCEW(IDI_QUILLDECK), IMAGE_ICON,
                   GetSystemMetrics(SM_CXSMICON), GetSystemMetrics(SM_CYSMICON), LR_SHARED));
    if (!icon) {
        raise_last_error("::LoadImageW(module, IDI_QUILLDECK, ...)");
    }
    return icon;
}

std::wstring load_text(UINT id) {
    const wchar_t* text = nullptr;
    // With a size of 0 the call answers the resource itself, which is not terminated.
    const int length =
        LoadStringW(GetModuleHandleW(nullptr), id, reinterpret_cast<wchar_t*>(&text), 0);
    if (length == 0) {
        raise_last_error("::LoadStringW(module, id, &text, 0)");
    }
    return {text, static_cast<std::size_t>(length)};
}

std::wstring tip_of(const vfs::user_info& user) {
    return load_text(IDS_PROGRAM) + L"\n" +
           (user.user_id.empty() ? load_text(IDS_NOBODY_SIGNED_IN)
                                 : load_text(IDS_SIGNED_IN_AS) + L" " + user.user_name);
}

} // namespace

tray_window::tray_window()
    : companion_window(tray_window_class),
      taskbar_created_(RegisterWindowMessageW(L"TaskbarCreated")),
      icon_(handle(), icon_message, load_icon()) {
    icon_.set_tip(tip_of(user_));
    refresh();
    icon_.show();
}

LRESULT tray_window::on_message(UINT message, WPARAM wparam, LPARAM lparam) {
    if (message == taskbar_created_) {
        icon_.show();
        return 0;
    }
    switch (message) {
    case icon_message:
        on_icon(LOWORD(lparam), {GET_X_LPARAM(wparam), GET_Y_LPARAM(wparam)});
        return 0;
    case WM_INITMENUPOPUP:
        refresh();
        EnableMenuItem(reinterpret_cast<HMENU>(wparam), ID_TRAY_SIGN_OUT,
                       user_.user_id.empty() ? MF_GRAYED : MF_ENABLED);
        return 0;
    case WM_COMMAND:
        on_command(LOWORD(wparam));
        return 0;
    case WM_DESTROY:
        icon_.hide();
        return companion_window::on_message(message, wparam, lparam);
    default:
        return companion_window::on_message(message, wparam, lparam);
    }
}

void tray_window::on_icon(UINT event, POINT place) {
    switch (event) {
    case WM_MOUSEMOVE:
        refresh();
        break;
    case WM_CONTEXTMENU:
        show_menu(place);
        break;
    case WM_LBUTTONDBLCLK:
    case NIN_KEYSELECT:
        open();
        break;
    default:
        break;
    }
}

void tray_window::on_command(UINT command) {
    switch (command) {
    case ID_TRAY_OPEN:
        open();
        break;
    case ID_TRAY_SIGN_OUT:
        request_sign_off();
        break;
    case ID_TRAY_EXIT:
        DestroyWindow(handle());
        break;
    default:
        break;
    }
}

void tray_window::refresh() {
    if (const auto user = read_identity()) {
        user_ = *user;
        icon_.set_tip(tip_of(user_));
    }
}

void tray_window::show_menu(POINT place) {
    // Disabled means that a message box of ours is open.
    if (!IsWindowEnabled(handle())) {
        return;
    }
    const unique_menu menu(LoadMenuW(GetModuleHandleW(nullptr), MAKEINTRESOURCEW(IDR_TRAY_MENU)));
    if (!menu) {
        raise_last_error("::LoadMenuW(module, IDR_TRAY_MENU)");
    }
    const HMENU popup = GetSubMenu(menu.get(), 0);
    SetMenuDefaultItem(popup, ID_TRAY_OPEN, FALSE);
    // The menu of a window that is not in the foreground would not close when the user clicks
    // elsewhere; the empty message makes the switch back happen.
    SetForegroundWindow(handle());
    const UINT alignment =
        GetSystemMetrics(SM_MENUDROPALIGNMENT) != 0 ? TPM_RIGHTALIGN : TPM_LEFTALIGN;
    TrackPopupMenuEx(popup, alignment | TPM_RIGHTBUTTON, place.x, place.y, handle(), nullptr);
    PostMessageW(handle(), WM_NULL, 0, 0);
}

void tray_window::open() {
    if (!IsWindowEnabled(handle())) {
        return;
    }
    if (drive_is_registered()) {
        open_drive(handle());
    } else {
        MessageBoxW(handle(), load_text(IDS_DRIVE_NOT_REGISTERED).c_str(),
                    load_text(IDS_PROGRAM).c_str(), MB_OK | MB_ICONINFORMATION);
    }
}

} // namespace companions
