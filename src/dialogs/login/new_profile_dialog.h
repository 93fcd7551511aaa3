#pragma once

#include "ui/dialog.h"
#include "ui/panel_keys.h"

namespace dialogs {

/// What the panel sends its parent. A text is a `const wchar_t*` in the second parameter that may
/// be null and lives as long as the call.
inline constexpr UINT WM_HIDE_PANEL = WM_USER + 2;
inline constexpr UINT WM_PROFILE_CREATED = WM_USER + 3; ///< with the user name
inline constexpr UINT WM_PROFILE_FAILED = WM_USER + 4;  ///< with the reason

/// The panel that creates an account, a child of the login dialog. What is typed goes to the
/// service unchecked; that decides.
class CDialogNewProfile : public ui::dialog {
public:
    CDialogNewProfile() noexcept;

    ~CDialogNewProfile() override { destroy(); }

protected:
    bool on_init() override;
    bool on_command(int id, int code) override;
    std::optional<LRESULT> on_message(UINT message, WPARAM wparam, LPARAM lparam) override;

private:
    void sign_up();
    void clear_fields() const;
    /// The mark of the default button is with the button that Enter presses: in this panel it is
    /// one of ours, which the platform, that looks in the dialog on top only, does not know.
    void mark_default_button() const;
    void tell_parent(UINT message, const wchar_t* text) const noexcept;

    ui::panel_keys m_keys;
};

} // namespace dialogs
