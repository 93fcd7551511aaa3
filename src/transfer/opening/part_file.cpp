#include "transfer/opening/part_file.h"

#include "com/worker.h"

#include <string>

namespace transfer {

namespace {

constexpr std::int64_t steps_in_second = 10'000'000;
constexpr std::int64_t from_1601_to_1970 = 11'644'473'600;

std::int64_t joined(const FILETIME& time) noexcept {
    return static_cast<std::int64_t>(time.dwHighDateTime) << 32 | time.dwLowDateTime;
}

} // namespace

std::optional<std::int64_t> read_file_time(const std::filesystem::path& path) {
    const utils::unique_file file(CreateFileW(
        path.c_str(), FILE_READ_ATTRIBUTES, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
        nullptr, OPEN_EXISTING, 0, nullptr));
    if (!file) {
        const DWORD error = GetLastError();
        if (error == ERROR_FILE_NOT_FOUND || error == ERROR_PATH_NOT_FOUND) {
            return std::nullopt;
        }
        throw com::worker_exception(L"file::get_modification_date(): Can't open file");
    }
    FILETIME time;
    if (!GetFileTime(file.get(), nullptr, nullptr, &time)) {
        throw com::worker_exception(L"file::get_modification_date(): Can't get file time");
    }
    return joined(time);
}

vfs::time_seconds seconds_of_file_time(std::int64_t time) noexcept {
    return time / steps_in_second - from_1601_to_1970;
}

part_file::part_file(const std::filesystem::path& place) : m_place(place) {
    // Names of its own for each process and each attempt: a file that is there is another's.
    for (int number = 0; number < 1000; ++number) {
        std::wstring name = L"~quilldeck";
        name.append(std::to_wstring(GetCurrentProcessId()))
            .append(L"-")
            .append(std::to_wstring(number))
            .append(L".part");
        m_path = place.parent_path() / name;
        m_file.reset(CreateFileW(m_path.c_str(), GENERIC_WRITE, FILE_SHARE_READ, nullptr,
                                 CREATE_NEW, FILE_ATTRIBUTE_NORMAL, nullptr));
        if (m_file) {
            m_ours = true;
            return;
        }
        if (GetLastError() != ERROR_FILE_EXISTS) {
            return;
        }
    }
}

part_file::~part_file() {
    m_file.reset();
    if (m_ours) {
        DeleteFileW(m_path.c_str());
    }
}

bool part_file::set_time(vfs::time_seconds time) const noexcept {
    const std::int64_t steps = (time + from_1601_to_1970) * steps_in_second;
    const FILETIME written{static_cast<DWORD>(steps), static_cast<DWORD>(steps >> 32)};
    return SetFileTime(m_file.get(), nullptr, nullptr, &written) != FALSE;
}

bool part_file::move_into_place() noexcept {
    m_file.reset();
    const DWORD attributes = GetFileAttributesW(m_place.c_str());
    if (attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_READONLY) != 0) {
        SetFileAttributesW(m_place.c_str(), attributes & ~DWORD{FILE_ATTRIBUTE_READONLY});
    }
    m_ours = MoveFileExW(m_path.c_str(), m_place.c_str(), MOVEFILE_REPLACE_EXISTING) == FALSE;
    return !m_ours;
}

} // namespace transfer
