#include "serializer/settings_file.h"

#include "serializer/exceptions.h"
#include "utils/filesystem.h"
#include "utils/unique_handle.h"

#include <algorithm>
#include <limits>
#include <system_error>

namespace serializer {

namespace {

namespace fs = std::filesystem;

fs::path with_suffix(fs::path path, const wchar_t* suffix) {
    return path += suffix;
}

/// Settings are nowhere near; more would take the memory of the program whose guest we are.
constexpr LONGLONG largest_file = 256LL * 1024 * 1024;

/// One call takes no more than this.
DWORD size_of_step(std::size_t left) {
    return static_cast<DWORD>(std::min<std::size_t>(left, std::numeric_limits<DWORD>::max()));
}

/// Scanners, backups and whoever else looks at a file for a moment stand in the way of a save, so
/// it is tried again, for an eighth of a second in all. `attempt` answers whether it succeeded, and
/// else leaves its reason to `GetLastError`.
template <class Attempt>
bool try_for_a_moment(Attempt attempt) {
    constexpr DWORD longest_wait = 64;
    for (DWORD wait = 1;; wait *= 2) {
        if (attempt()) {
            return true;
        }
        const DWORD error = GetLastError();
        const bool passes = error == ERROR_SHARING_VIOLATION || error == ERROR_LOCK_VIOLATION ||
                            error == ERROR_ACCESS_DENIED;
        if (!passes || wait > longest_wait) {
            SetLastError(error);
            return false;
        }
        Sleep(wait);
    }
}

void write_file(const fs::path& path, std::string_view bytes, const char* where) {
    utils::unique_file file;
    const bool opened = try_for_a_moment([&] {
        file = utils::unique_file(CreateFileW(path.c_str(), GENERIC_WRITE, 0, nullptr,
                                              CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr));
        return static_cast<bool>(file);
    });
    if (!opened) {
        throw serializer_exception(where, "Stream can not be opened for writing");
    }
    for (DWORD size = 0; !bytes.empty(); bytes.remove_prefix(size)) {
        if (!WriteFile(file.get(), bytes.data(), size_of_step(bytes.size()), &size, nullptr)) {
            throw serializer_exception(where, "Stream can not be written");
        }
    }
    // The rename could reach the disk before the bytes, and a loss of power leave an empty file.
    if (!FlushFileBuffers(file.get())) {
        throw serializer_exception(where, "Stream can not be written");
    }
}

/// Replaces `to` by `from` in one step, so that `to` is never missing: whoever found no file would
/// begin with empty settings. The library's own call hides what kind of failure it met.
void rename_over(const fs::path& from, const fs::path& to) {
    if (!try_for_a_moment(
            [&] { return MoveFileExW(from.c_str(), to.c_str(), MOVEFILE_REPLACE_EXISTING); })) {
        const std::error_code failure(static_cast<int>(GetLastError()), std::system_category());
        throw fs::filesystem_error("cannot rename", from, to, failure);
    }
}

} // namespace

std::string read_file(const fs::path& path, const char* where) {
    const utils::unique_file file(CreateFileW(path.c_str(), GENERIC_READ, FILE_SHARE_READ, nullptr,
                                              OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr));
    LARGE_INTEGER size{};
    if (!file || !GetFileSizeEx(file.get(), &size) || size.QuadPart > largest_file) {
        throw serializer_exception(where, "Stream can not be opened for reading");
    }
    std::string bytes(static_cast<std::size_t>(size.QuadPart), '\0');
    DWORD got = 0;
    for (std::size_t at = 0; at < bytes.size(); at += got) {
        if (!ReadFile(file.get(), bytes.data() + at, size_of_step(bytes.size() - at), &got,
                      nullptr) ||
            got == 0) {
            throw serializer_exception(where, "Stream can not be read");
        }
    }
    return bytes;
}

void replace_file(const fs::path& path, std::string_view bytes, bool keep_backup,
                  const char* where) {
    const fs::path written = with_suffix(path, L".tmp");
    const fs::path backup = with_suffix(path, L".bak");
    write_file(written, bytes, where);
    fs::remove(backup);
    if (keep_backup && utils::filesystem::exists(path)) {
        std::error_code no_links;
        fs::create_hard_link(path, backup, no_links);
        if (no_links) {
            rename_over(path, backup);
        }
    }
    rename_over(written, path);
}

} // namespace serializer
