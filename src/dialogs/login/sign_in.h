#pragma once

#include "utils/named_mutex.h"

#include <windows.h>

namespace dialogs {

/// Sees to it that a user is signed in, by the login dialog on top of `owner` (null for none) if
/// need be. False when the dialog was cancelled.
///
/// `mutex` is that of `vfs_quilldeck::login_mutex_name`; it is held while the dialog is open, so
/// that one dialog serves all processes of a user: the others wait here, without limit. A call
/// that comes in on the thread of the open dialog, which would wait for itself, answers false.
/// Throws `vfs::exception` and `utils::system_error_exception`.
bool ensure_logged_in(utils::named_mutex& mutex, HWND owner);

} // namespace dialogs
