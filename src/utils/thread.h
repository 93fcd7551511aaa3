#pragma once

#include "utils/unique_handle.h"

#include <functional>

namespace utils {

/// Runs `body` on a thread of its own and answers the thread's handle, which is signalled when the
/// thread has ended. The thread owns `body` and holds a reference on the module that contains this
/// code, so that the code cannot be unloaded under it. Nothing that `body` throws passes the
/// thread's top. Throws `system_error_exception`.
unique_handle start_thread(std::function<void()> body);

} // namespace utils
