/// The shared block that holds the identity of the signed-in user between all processes.
#pragma once

#include "vfs/records.h"

#include <windows.h>

namespace vfs_quilldeck {

/// Reads the block; starts the session process if it does not run. Throws `exception` named
/// "Internal error".
vfs::user_info read_shared_user_info(HMODULE module);

/// Writes the block; otherwise the same.
void write_shared_user_info(HMODULE module, const vfs::user_info& info);

} // namespace vfs_quilldeck
