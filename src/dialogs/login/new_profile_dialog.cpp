#include "dialogs/login/new_profile_dialog.h"

#include "dialogs/login/secret_field.h"
#include "resources/dialog_ids.h"
#include "ui/wait_cursor.h"
#include "utils/wipe.h"
#include "vfs/exceptions.h"
#include "vfs_quilldeck/session/session.h"

#include <array>
#include <optional>
#include <string>

namespace dialogs {

namespace {

/// Posted by the panel to itself.
constexpr UINT WM_FOCUS_MOVED = WM_APP;

/// In the order of the request.
constexpr std::array fields = {
    IDC_NEW_PROFILE_USERNAME, IDC_NEW_PROFILE_PASSWORD,   IDC_NEW_PROFILE_VERIFY_PASSWORD,
    IDC_NEW_PROFILE_EMAIL,    IDC_NEW_PROFILE_FIRST_NAME, IDC_NEW_PROFILE_LAST_NAME,
};

/// The reason of a failure; nothing when the account is there.
std::optional<std::wstring> create_profile(const std::array<std::wstring, fields.size()>& texts) {
    const ui::wait_cursor wait;
    try {
        vfs_quilldeck::new_profile(texts[0], texts[1], texts[2], texts[3], texts[4], texts[5]);
        return std::nullopt;
    } catch (const vfs::exception& failure) {
        return failure.get_description();
    }
}

} // namespace

CDialogNewProfile::CDialogNewProfile() noexcept : dialog(IDD_NEW_PROFILE) {}

bool CDialogNewProfile::on_init() {
    m_keys.attach(handle(), IDC_NEW_PROFILE_SIGN_UP);
    return false;
}

bool CDialogNewProfile::on_command(int id, int code) {
    switch (code) {
    case EN_SETFOCUS:
    case EN_KILLFOCUS:
    case BN_SETFOCUS:
    case BN_KILLFOCUS:
        // Where the focus goes, and what the platform marks for it, is known afterwards.
        PostMessageW(handle(), WM_FOCUS_MOVED, 0, 0);
        return true;
    case BN_CLICKED:
        break;
    default:
        return false;
    }
    switch (id) {
    case IDC_NEW_PROFILE_SIGN_UP:
        sign_up();
        return true;
    case IDCANCEL:
        tell_parent(WM_HIDE_PANEL, nullptr);
        return true;
    default:
        return false;
    }
}

std::optional<LRESULT> CDialogNewProfile::on_message(UINT message, WPARAM, LPARAM) {
    switch (message) {
    case WM_FOCUS_MOVED:
        mark_default_button();
        return 0;
    case WM_DESTROY:
        clear_fields();
        return std::nullopt;
    default:
        return std::nullopt;
    }
}

void CDialogNewProfile::sign_up() {
    std::array<std::wstring, fields.size()> texts;
    const utils::wipe_at_end password(texts[1]);
    const utils::wipe_at_end verify_password(texts[2]);
    for (std::size_t i = 0; i < fields.size(); ++i) {
        read_secret(control(fields[i]), texts[i]);
    }
    if (const auto failure = create_profile(texts)) {
        tell_parent(WM_PROFILE_FAILED, failure->c_str());
        return;
    }
    clear_fields();
    tell_parent(WM_PROFILE_CREATED, texts.front().c_str());
}

void CDialogNewProfile::clear_fields() const {
    for (const int id : fields) {
        clear_secret(control(id));
    }
}

void CDialogNewProfile::mark_default_button() const {
    const HWND focused = GetFocus();
    const HWND sign_up = control(IDC_NEW_PROFILE_SIGN_UP);
    const HWND cancel = control(IDCANCEL);
    HWND marked = GetDlgItem(GetParent(handle()), IDOK);
    if (IsChild(handle(), focused)) {
        marked = focused == cancel ? cancel : sign_up;
    }
    for (const HWND button : {sign_up, cancel, GetDlgItem(GetParent(handle()), IDOK)}) {
        SendMessageW(button, BM_SETSTYLE, button == marked ? BS_DEFPUSHBUTTON : BS_PUSHBUTTON,
                     TRUE);
    }
}

void CDialogNewProfile::tell_parent(UINT message, const wchar_t* text) const noexcept {
    SendMessageW(GetParent(handle()), message, 0, reinterpret_cast<LPARAM>(text));
}

} // namespace dialogs
