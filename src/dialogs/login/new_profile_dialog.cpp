#include "dialogs/login/new_profile_dialog.h"

#include "resources/dialog_ids.h"
#include "ui/wait_cursor.h"
#include "vfs/exceptions.h"
#include "vfs_quilldeck/session/session.h"

#include <algorithm>
#include <array>
#include <optional>
#include <string>

namespace dialogs {

namespace {

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
    if (code != BN_CLICKED) {
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

void CDialogNewProfile::sign_up() {
    std::array<std::wstring, fields.size()> texts;
    std::transform(fields.begin(), fields.end(), texts.begin(),
                   [this](int id) { return get_text(id); });
    if (const auto failure = create_profile(texts)) {
        tell_parent(WM_PROFILE_FAILED, failure->c_str());
        return;
    }
    for (const int id : fields) {
        set_text(id, {});
    }
    tell_parent(WM_PROFILE_CREATED, texts.front().c_str());
}

void CDialogNewProfile::tell_parent(UINT message, const wchar_t* text) const noexcept {
    SendMessageW(GetParent(handle()), message, 0, reinterpret_cast<LPARAM>(text));
}

} // namespace dialogs
