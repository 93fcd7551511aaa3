#include "dialogs/login/login_dialog.h"

#include "dialogs/login/login_settings.h"
#include "dialogs/login/secret_field.h"
#include "resources/dialog_ids.h"
#include "resources/string_ids.h"
#include "ui/message.h"
#include "ui/placement.h"
#include "ui/strings.h"
#include "ui/wait_cursor.h"
#include "utils/module.h"
#include "utils/unique_handle.h"
#include "utils/wipe.h"
#include "vfs_quilldeck/session/session.h"
#include "vfs_quilldeck/session/session_objects.h"

#include <shlobj.h>

#include <optional>

namespace dialogs {

namespace {

// Pixels, for a dialog font with the usual units; see `ui::scaled_to_font`.
constexpr RECT link_place{11, 165, 161, 181};
constexpr RECT panel_place{0, 184, 273, 184 + 244};
constexpr int height_without_panel = 192;
constexpr int height_with_panel = 413;

/// Tells the companion processes that the dialog waits for the user. Without them there is nobody
/// to tell.
void signal_waiting() {
    const utils::unique_handle event(
        OpenEventW(EVENT_MODIFY_STATE, FALSE, vfs_quilldeck::login_dialog_event_name));
    if (event) {
        SetEvent(event.get());
    }
}

/// Keeps the user away from a window while a request is on its way.
class disabled_window {
public:
    explicit disabled_window(HWND window) noexcept : window_(window) {
        EnableWindow(window, FALSE);
    }

    disabled_window(const disabled_window&) = delete;
    disabled_window& operator=(const disabled_window&) = delete;

    ~disabled_window() { EnableWindow(window_, TRUE); }

private:
    HWND window_;
};

} // namespace

CLoginDlg::CLoginDlg() noexcept : dialog(IDD_LOGIN) {}

bool CLoginDlg::on_init() {
    ui::center_window(handle());
    create_link();
    create_panel();
    show_panel(false);
    load_settings();
    SetWindowPos(handle(), HWND_TOP, 0, 0, 0, 0, SWP_NOMOVE | SWP_NOSIZE);
    return true;
}

void CLoginDlg::create_link() {
    m_new_account_link.create(handle(), IDC_LOGIN_NEW_ACCOUNT,
                              ui::scaled_to_font(handle(), link_place), L"New Account",
                              ui::link_mode::tell_parent, {}, GetSysColor(COLOR_HOTLIGHT));
}

void CLoginDlg::create_panel() {
    m_new_profile.create(handle());
    const RECT place = ui::scaled_to_font(handle(), panel_place);
    MoveWindow(m_new_profile.handle(), place.left, place.top, place.right - place.left,
               place.bottom - place.top, FALSE);
}

void CLoginDlg::load_settings() {
    const utils::wipe_at_end password(m_password);
    const login_settings settings = load_login_settings();
    if (settings.save_password || settings.auto_login) {
        load_credentials(m_username, m_password);
    }
    set_text(IDC_LOGIN_USERNAME, m_username);
    set_text(IDC_LOGIN_PASSWORD, m_password);
    set_checked(IDC_LOGIN_SAVE_PASSWORD, settings.save_password);
    set_checked(IDC_LOGIN_AUTO_LOGIN, settings.auto_login);
    if (settings.auto_login) {
        SendMessageW(handle(), WM_COMMAND, IDOK, reinterpret_cast<LPARAM>(control(IDOK)));
    } else {
        signal_waiting();
    }
}

void CLoginDlg::show_panel(bool show) {
    const RECT client{0, 0, 0, show ? height_with_panel : height_without_panel};
    ui::set_client_height(handle(), ui::scaled_to_font(handle(), client).bottom);
    // What grows downwards may pass the edge of the screen.
    ui::move_into_work_area(handle());
    // The focus leaves what is about to be hidden.
    if (show) {
        ShowWindow(m_new_profile.handle(), SW_SHOW);
        focus(GetDlgItem(m_new_profile.handle(), IDC_NEW_PROFILE_USERNAME));
        ShowWindow(m_new_account_link.handle(), SW_HIDE);
    } else {
        ShowWindow(m_new_account_link.handle(), SW_SHOW);
        if (IsChild(m_new_profile.handle(), GetFocus())) {
            focus(m_new_account_link.handle());
        }
        ShowWindow(m_new_profile.handle(), SW_HIDE);
    }
}

bool CLoginDlg::on_command(int id, [[maybe_unused]] int code) {
    switch (id) {
    case IDOK:
        log_in();
        return true;
    case IDCANCEL:
        end(IDCANCEL);
        return true;
    default:
        return false;
    }
}

std::optional<LRESULT> CLoginDlg::on_message(UINT message, WPARAM, LPARAM lparam) {
    const auto* const text = reinterpret_cast<const wchar_t*>(lparam);
    switch (message) {
    // The first two are numbers that the platform gives a meaning too, but only where the dialog
    // procedure has none.
    case ui::WM_LINK_CLICKED:
        show_panel(true);
        return 0;
    case WM_HIDE_PANEL:
        show_panel(false);
        return 0;
    case WM_PROFILE_CREATED:
        profile_created(text);
        return 0;
    case WM_PROFILE_FAILED:
        profile_failed(text);
        return 0;
    case WM_DESTROY:
        clear_secret(control(IDC_LOGIN_PASSWORD));
        return std::nullopt;
    default:
        return std::nullopt;
    }
}

void CLoginDlg::log_in() {
    if (try_login()) {
        SHChangeNotify(SHCNE_ASSOCCHANGED, SHCNF_IDLIST, nullptr, nullptr);
        end(IDOK);
    } else if (IsWindowVisible(handle())) {
        // A message's owner that was disabled before it does not become active after it.
        SetForegroundWindow(handle());
    }
}

void CLoginDlg::store_what_was_typed() {
    m_username = get_text(IDC_LOGIN_USERNAME);
    read_secret(control(IDC_LOGIN_PASSWORD), m_password);
    const login_settings settings{is_checked(IDC_LOGIN_SAVE_PASSWORD),
                                  is_checked(IDC_LOGIN_AUTO_LOGIN)};
    store_login_settings(settings);
    // Before they have been tried: wrong ones stay stored.
    if (settings.save_password || settings.auto_login) {
        store_credentials(m_username, m_password);
    } else {
        store_credentials({}, {});
    }
}

bool CLoginDlg::try_login() {
    const utils::wipe_at_end password(m_password);
    std::optional<disabled_window> disabled;
    try {
        store_what_was_typed();
        disabled.emplace(handle());
        const ui::wait_cursor wait;
        vfs_quilldeck::login(utils::own_module(), m_username, m_password);
        return true;
    } catch (...) {
        // Whatever it was: the dialog, which may have tried by itself, now waits for the user.
        signal_waiting();
        ui::show_current_failure(handle());
        return false;
    }
}

void CLoginDlg::profile_created(const wchar_t* username) {
    show_panel(false);
    if (username) {
        m_username = username;
        set_text(IDC_LOGIN_USERNAME, m_username);
        clear_secret(control(IDC_LOGIN_PASSWORD));
        focus(control(IDC_LOGIN_PASSWORD));
    }
    ui::show_message(handle(), IDS_NEW_PROFILE_ERROR, IDS_NEW_PROFILE_CREATED, {}, MB_OK);
}

void CLoginDlg::profile_failed(const wchar_t* reason) {
    if (reason) {
        ui::show_message(handle(), ui::load_string(IDS_NEW_PROFILE_ERROR), reason,
                         MB_OK | MB_ICONERROR);
    }
}

} // namespace dialogs
