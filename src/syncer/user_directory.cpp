#include "syncer/user_directory.h"

#include "syncer/exceptions.h"
#include "utils/filesystem.h"
#include "utils/narrow.h"

#include <algorithm>
#include <string_view>

namespace syncer {

namespace {

/// The platform drops blanks and dots at the end, so that two users would share a folder.
bool is_folder_name(std::wstring_view name) {
    constexpr std::wstring_view forbidden = L"<>:\"/\\|?*";
    return !name.empty() && name.back() != L'.' && name.back() != L' ' &&
           std::ranges::none_of(name, [forbidden](wchar_t c) {
               return c < L' ' || forbidden.find(c) != std::wstring_view::npos;
           });
}

} // namespace

std::filesystem::path user_directory(const std::wstring& user_name, const wchar_t* name,
                                     const char* where) {
    const std::wstring path =
        utils::filesystem::get_special_directory(0) + L"\\Quilldeck\\" + user_name + L"\\" + name;
    if (!is_folder_name(user_name)) {
        throw create_directory_exception(where, utils::narrow(path) + " can not be created");
    }
    return path;
}

} // namespace syncer
