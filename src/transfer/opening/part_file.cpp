#include "transfer/opening/part_file.h"

#include "com/worker.h"
#include "utils/file_time.h"

#include <string>

namespace transfer {

namespace {

std::int64_t time_of(const utils::unique_file& file) {
    FILETIME time;
    if (!GetFileTime(file.get(), nullptr, nullptr, &time)) {
        throw com::worker_exception(L"file::get_modification_date(): Can't get file time");
    }
    return utils::steps_of(time);
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
    return time_of(file);
}

part_file::part_file(const std::filesystem::path& place) : m_place(place) {
    // A file of that name is what the store has under it, or was left by a machine that went down.
    for (int number = 0; number < 1000; ++number) {
        std::wstring name = L"~quilldeck";
        for (const DWORD part : {GetCurrentProcessId(), GetCurrentThreadId()}) {
            name.append(std::to_wstring(part)).append(L"-");
        }
        name.append(std::to_wstring(number)).append(L".part");
        m_path = place.parent_path() / name;
        m_file.reset(CreateFileW(m_path.c_str(), GENERIC_READ | GENERIC_WRITE | DELETE,
                                 FILE_SHARE_READ, nullptr, CREATE_NEW, FILE_ATTRIBUTE_NORMAL,
                                 nullptr));
        if (m_file) {
            m_ours = true;
            set_passing(true);
            return;
        }
        if (GetLastError() != ERROR_FILE_EXISTS) {
            return;
        }
    }
}

part_file::~part_file() {
    if (m_ours) {
        m_file.reset();
        DeleteFileW(m_path.c_str());
    }
}

std::int64_t part_file::set_time(vfs::time_seconds time) const {
    const std::optional<FILETIME> written = utils::file_time_of(time);
    if (time != vfs::time_unknown && written &&
        !SetFileTime(m_file.get(), nullptr, nullptr, &*written)) {
        throw com::worker_exception(L"file::set_modification_date(): Can't get file time");
    }
    return time_of(m_file);
}

bool part_file::move_into_place() noexcept {
    set_passing(false);
    m_file.reset();
    const DWORD attributes = GetFileAttributesW(m_place.c_str());
    const bool protects_itself =
        attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_READONLY) != 0;
    if (protects_itself) {
        SetFileAttributesW(m_place.c_str(), attributes & ~DWORD{FILE_ATTRIBUTE_READONLY});
    }
    m_ours = MoveFileExW(m_path.c_str(), m_place.c_str(), MOVEFILE_REPLACE_EXISTING) == FALSE;
    if (m_ours && protects_itself) {
        SetFileAttributesW(m_place.c_str(), attributes);
    }
    return !m_ours;
}

void part_file::set_passing(bool passing) const noexcept {
    if (m_file) {
        FILE_DISPOSITION_INFO disposition{passing};
        SetFileInformationByHandle(m_file.get(), FileDispositionInfo, &disposition,
                                   sizeof(disposition));
    }
}

} // namespace transfer
