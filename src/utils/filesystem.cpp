#include "utils/filesystem.h"

#include "utils/exceptions.h"

#include <windows.h>

#include <shlobj.h>

#include <array>
#include <source_location>
#include <system_error>

namespace utils::filesystem {

namespace {

std::wstring local_application_data(const char* where) {
    std::array<wchar_t, MAX_PATH> path{};
    if (FAILED(SHGetFolderPathW(nullptr, CSIDL_LOCAL_APPDATA, nullptr, SHGFP_TYPE_CURRENT,
                                path.data()))) {
        // Users and support know the message by this text, which names the roaming folder.
        throw system_error_exception(
            where, "::SHGetFolderPath(NULL, CSIDL_APPDATA, NULL, SHGFP_TYPE_CURRENT, pszTempPath)");
    }
    return path.data();
}

} // namespace

const std::wstring& get_special_directory(int) {
    // A failure is not kept: the next call asks again.
    static const std::wstring directory =
        local_application_data(std::source_location::current().function_name());
    return directory;
}

bool exists(const std::filesystem::path& path) {
    if (GetFileAttributesW(path.c_str()) != INVALID_FILE_ATTRIBUTES) {
        return true;
    }
    const DWORD error = GetLastError();
    if (error == ERROR_FILE_NOT_FOUND || error == ERROR_PATH_NOT_FOUND) {
        return false;
    }
    throw std::filesystem::filesystem_error(
        "cannot look for", path, std::error_code(static_cast<int>(error), std::system_category()));
}

} // namespace utils::filesystem
