#pragma once

#include <string>

namespace transfer {

/// Shows what ended a worker; to be called in a handler of it. `worker` is the name by which a
/// failure of no known kind is reported.
void show_worker_failure(const std::wstring& worker);

} // namespace transfer
