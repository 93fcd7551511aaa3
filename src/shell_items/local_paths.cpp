#include "shell_items/local_paths.h"

#include "utils/filesystem.h"

#include <algorithm>
#include <filesystem>

namespace shell {

namespace {

std::wstring own_folder() {
    return utils::filesystem::get_special_directory(0) + L"\\Quilldeck";
}

} // namespace

std::wstring files_saved_folder(const std::wstring& user_name) {
    std::wstring path = own_folder() + L"\\" + user_name + L"\\files_saved";
    std::ranges::replace(path, L'/', L'\\');
    std::filesystem::create_directories(path);
    return path;
}

std::wstring filter_folder() {
    return own_folder() + L"\\Filter temp";
}

} // namespace shell
