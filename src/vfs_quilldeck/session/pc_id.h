/// The id of this installation, which the service is told at a login. It is made when the extension
/// is registered, since an ordinary login may not write to the machine's hive.
#pragma once

#include <string>

namespace vfs_quilldeck {

/// Makes sure that the id exists. Throws `exception`.
void ensure_pc_id();

/// The id, 36 characters; read from the registry once in a process. Throws `exception` when it has
/// not been made.
std::wstring read_pc_id();

} // namespace vfs_quilldeck
