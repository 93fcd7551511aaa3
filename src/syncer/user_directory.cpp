#include "syncer/user_directory.h"

#include "syncer/exceptions.h"
#include "utils/file_name.h"
#include "utils/filesystem.h"
#include "utils/narrow.h"

#include <string_view>

namespace syncer {

std::filesystem::path user_directory(const std::wstring& user_name, const wchar_t* name,
                                     const char* where) {
    const auto below = [name](std::wstring_view folder) {
        return (utils::filesystem::get_special_directory(0) + L"\\Quilldeck\\")
            .append(folder)
            .append(L"\\")
            .append(name);
    };
    const std::wstring_view folder = utils::made_name(user_name);
    if (!utils::is_file_name(folder)) {
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
