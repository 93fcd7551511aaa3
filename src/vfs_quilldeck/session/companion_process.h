/// The companion processes as the extension sees them. Failures are raised as plain wide strings,
/// which the session puts behind words of its own.
#pragma once

#include <windows.h>

namespace vfs_quilldeck {

/// Whether the tray process runs; with `start` it is started if need be and waited for, 15 seconds
/// at the most. `module` is the module in whose folder the companions lie.
bool ensure_tray(HMODULE module, bool start);

/// The same for the session process.
bool ensure_session(HMODULE module, bool start);

} // namespace vfs_quilldeck
