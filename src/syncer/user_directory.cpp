#include "syncer/user_directory.h"

#include "syncer/exceptions.h"
#include "utils/filesystem.h"
#include "utils/narrow.h"

#include <algorithm>
#include <string_view>

namespace syncer {

namespace {

/// The name of a folder as the platform makes it, which drops blanks and dots at its end. It does
/// not so where the name stands within a path, and would not find the folder that it made.
std::wstring_view folder_name_of(std::wstring_view name) {
    return name.substr(0, name.find_last_not_of(L". ") + 1);
}

bool is_folder_name(std::wstring_view name) {
    constexpr std::wstring_view forbidden = L"<>:\"/\\|?*";
    return !name.empty() && std::ranges::none_of(name, [forbidden](wchar_t c) {
        return c < L' ' || forbidden.find(c) != std::wstring_view::npos;
    });
}

} // namespace

std::filesystem::path user_directory(const std::wstring& user_name, const wchar_t* name,
                                     const char* where) {
    const auto below = [name](std::wstring_view folder) {
        return (utils::filesystem::get_special_directory(0) + L"\\Quilldeck\\")
            .append(folder)
            .append(L"\\")
            .append(name);
    };
    const std::wstring_view folder = folder_name_of(user_name);
    if (!is_folder_name(folder)) {
        throw create_directory_exception(where,
                                         utils::narrow(below(user_name)) + " can not be created");
    }
    return below(folder);
}

std::filesystem::path settings_file(const std::wstring& user_name, const wchar_t* name,
                                    const char* where) {
    const std::filesystem::path directory = user_directory(user_name, L"settings", where);
    std::error_code failure;
    if (!std::filesystem::is_directory(directory, failure)) {
        std::filesystem::create_directories(directory, failure);
        // Another process may have made it at the same time.
        if (!std::filesystem::is_directory(directory, failure)) {
            throw create_directory_exception(where, utils::narrow(directory.native()) +
                                                        " can not be created");
        }
    }
    return directory / name;
}

} // namespace syncer
