/// The session of the signed-in user as this process sees it. `module` is the extension's own
/// module, from whose folder the companions are started. Failures are `exception`.
#pragma once

#include "vfs/client.h"

#include <windows.h>

#include <string>

namespace vfs_quilldeck {

/// Whether somebody is signed in. Starts the tray process if need be, never the session process.
bool is_logged_in(HMODULE module);

/// The identity in the shared block.
vfs::user_info get_user_info(HMODULE module);

/// The process's client, built anew when the identity in the shared block is another one.
vfs::client_ptr get_client(HMODULE module);

/// Signs in and publishes the identity to all processes.
void login(HMODULE module, const std::wstring& user, const std::wstring& password);

/// Creates an account; needs no session.
void new_profile(const std::wstring& user_name, const std::wstring& password,
                 const std::wstring& verify_password, const std::wstring& email,
                 const std::wstring& first_name, const std::wstring& last_name);

} // namespace vfs_quilldeck
