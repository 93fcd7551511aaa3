/// The objects that the extension shares with the companion processes of a logon session. The
/// companions create them; the extension only opens them.
#pragma once

#include <cstddef>

namespace vfs_quilldeck {

/// The mapping that holds the identity of the signed-in user, a `shared_user_info` at its start.
inline constexpr auto identity_mapping_name = L"Local\\Quilldeck_MMF_UID";
inline constexpr std::size_t identity_view_size = 1024;
/// Held around every access to that mapping.
inline constexpr auto identity_mutex_name = L"Local\\Quilldeck_Mutex_UID";
/// Its existence tells that the session process runs.
inline constexpr auto session_event_name = L"Local\\Quilldeck_Event_LogOff";
/// Its existence tells that the tray process runs.
inline constexpr auto tray_mutex_name = L"Local\\QDD_MUTEX_TRAY_ICON";

/// Held by whoever downloads one file.
inline constexpr auto transfer_mutex_name = L"Local\\Quilldeck_Mutex_Download_Upload";
/// The list of the files that a save dialog put down, UTF-16 text, empty at first.
inline constexpr auto save_as_mapping_name = L"Local\\Quilldeck_FileMapping_SaveAs";
inline constexpr std::size_t save_as_view_size = 0x80000;
/// Held while the login dialog is open, and by whoever asks whether it has to be.
inline constexpr auto login_mutex_name = L"Local\\QDD_LOGIN_MUTEX";
/// Set when the login dialog waits for the user.
inline constexpr auto login_dialog_event_name = L"Local\\QDD_LOGIN_DLG_EVENT";

inline constexpr auto session_program = L"Quilldeck_Session.exe";
inline constexpr auto tray_program = L"Quilldeck_Tray.exe";

} // namespace vfs_quilldeck
