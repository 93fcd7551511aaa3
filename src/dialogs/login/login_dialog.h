#pragma once

#include "dialogs/login/new_profile_dialog.h"
#include "ui/dialog.h"
#include "ui/url_static.h"

#include <string>

namespace dialogs {

/// The dialog that signs a user in; `do_modal` answers `IDOK` when that is done. It has two shapes,
/// with and without the panel that creates an account. Its requests run on the thread that shows
/// it. To be run under the login mutex only: `ensure_logged_in` does it.
class CLoginDlg : public ui::dialog {
public:
    CLoginDlg() noexcept;

protected:
    bool on_init() override;
    bool on_command(int id, int code) override;
    std::optional<LRESULT> on_message(UINT message, WPARAM wparam, LPARAM lparam) override;

private:
    void create_link();
    void create_panel();
    void load_settings();
    void show_panel(bool show);
    void log_in();
    bool try_login();
    void store_what_was_typed();
    void profile_created(const wchar_t* username);
    void profile_failed(const wchar_t* reason);

    std::wstring m_username;
    /// Empty but while it is used.
    std::wstring m_password;
    ui::CUrlStatic m_new_account_link;
    CDialogNewProfile m_new_profile;
};

} // namespace dialogs
