#pragma once

#include "utils/slim_lock.h"

namespace vfs_quilldeck {

/// Guards the process's one client. It is held during the requests of a login, of a rebuilt client
/// and of a path walk, and is taken before the mutex of the shared block and before that of the
/// PC id.
extern utils::slim_lock client_cache_mutex;

} // namespace vfs_quilldeck
