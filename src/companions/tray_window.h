#pragma once

#include "companions/companion_window.h"
#include "companions/tray_icon.h"
#include "vfs/records.h"

namespace companions {

/// The tray's window: its icon, its menu, and what the menu's commands do. Commands come as
/// `WM_COMMAND` with the numbers of `tray_ids.h`. Exit ends the tray alone: the user stays signed
/// in.
class tray_window : public companion_window {
public:
    /// By which the icon reports.
    static constexpr UINT icon_message = WM_APP;

    /// Throws `system_error_exception`.
    tray_window();

protected:
    LRESULT on_message(UINT message, WPARAM wparam, LPARAM lparam) override;

private:
    /// What the icon reports, with the place on the screen where it happened.
    void on_icon(UINT event, POINT place);
    void on_command(UINT command);
    /// Reads who is signed in. Done when the user looks, so that nothing has to be polled.
    void refresh();
    void show_menu(POINT place);
    void open();

    UINT taskbar_created_;
    vfs::user_info user_;
    tray_icon icon_;
};

} // namespace companions
