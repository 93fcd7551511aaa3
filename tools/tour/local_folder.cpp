#include "local_folder.h"

#include <windows.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <stdexcept>

namespace tour {

namespace {

std::int64_t seconds_of(std::filesystem::file_time_type time) {
    const auto wall = std::chrono::file_clock::to_sys(time);
    return std::chrono::duration_cast<std::chrono::seconds>(wall.time_since_epoch()).count();
}

} // namespace

std::vector<local_file> list_local_files(const std::filesystem::path& folder) {
    std::vector<local_file> files;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(folder)) {
        if (!entry.is_regular_file()) {
            continue;
        }
        local_file file;
        file.path = entry.path();
        for (const auto& part : entry.path().lexically_relative(folder).parent_path()) {
            file.folders.push_back(part.wstring());
        }
        file.name = entry.path().filename().wstring();
        file.size = static_cast<std::int64_t>(entry.file_size());
        file.modified = seconds_of(entry.last_write_time());
        files.push_back(std::move(file));
    }
    std::ranges::sort(files, {}, &local_file::path);
    return files;
}

std::filesystem::path find_sample_folder() {
    std::array<wchar_t, MAX_PATH> name{};
    GetModuleFileNameW(nullptr, name.data(), static_cast<DWORD>(name.size()));
    for (std::filesystem::path at = std::filesystem::path(name.data()).parent_path();
         at.has_relative_path(); at = at.parent_path()) {
        if (const auto found = at / L"demo" / L"upload"; std::filesystem::is_directory(found)) {
            return found;
        }
    }
    throw std::runtime_error("there is no folder of samples: name the folder to upload");
}

} // namespace tour
