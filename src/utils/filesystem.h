#pragma once

#include <filesystem>
#include <string>

namespace utils::filesystem {

/// The platform's per-user directory for local application data, without a trailing separator. The
/// platform is asked once a process: it reads the registry each time, and this is called for each
/// item that a window paints. The argument is kept for its callers, who all pass 0. Throws
/// `system_error_exception`.
const std::wstring& get_special_directory(int);

/// Whether there is a file or directory. Throws `std::filesystem::filesystem_error` where that
/// cannot be found out, which the library's own query takes for "no": whoever writes then would
/// write over what is there.
bool exists(const std::filesystem::path& path);

} // namespace utils::filesystem
