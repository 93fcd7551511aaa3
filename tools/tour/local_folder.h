#pragma once

#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

namespace tour {

/// A file below a local folder.
struct local_file {
    std::filesystem::path path;
    std::vector<std::wstring> folders; ///< names from the folder down to the file
    std::wstring name;
    std::int64_t size = 0;
    std::int64_t modified = 0; ///< seconds since 1970-01-01 00:00 UTC
};

/// All files below `folder`, sorted by path. Throws `std::filesystem::filesystem_error`.
std::vector<local_file> list_local_files(const std::filesystem::path& folder);

/// The folder of samples that comes with the sources: the nearest "demo\upload" above this program.
std::filesystem::path find_sample_folder();

} // namespace tour
