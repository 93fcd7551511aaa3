#pragma once

#include <string>

namespace utils::filesystem {

/// The platform's per-user directory for local application data, without a trailing separator.
/// The argument is kept for its callers, who all pass 0. Throws `system_error_exception`.
std::wstring get_special_directory(int);

} // namespace utils::filesystem
