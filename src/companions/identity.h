/// The session's shared objects as the companions use them, without ever starting a process.
#pragma once

#include "vfs/records.h"

#include <optional>

namespace companions {

/// Who is signed in; an empty `user_id` means nobody, or no session process. Empty when another
/// process holds the block, which is not waited for: this is called on a thread with windows.
std::optional<vfs::user_info> read_identity();

/// Asks the session process to sign the user off, and does not wait for it. Without a session
/// process nobody is signed in and there is nothing to do. Throws `system_error_exception`.
void request_sign_off();

} // namespace companions
