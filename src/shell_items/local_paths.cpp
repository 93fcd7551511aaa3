#include "shell_items/local_paths.h"

#include "shell_items/local_name.h"
#include "syncer/user_directory.h"
#include "utils/filesystem.h"

#include <source_location>

namespace shell {

std::wstring files_saved_folder(const std::wstring& user_name) {
    return syncer::user_directory(user_name, L"files_saved",
                                  std::source_location::current().function_name())
        .native();
}

std::wstring filter_folder() {
    return utils::filesystem::get_special_directory(0) + L"\\Quilldeck\\Filter temp";
}

std::wstring local_path(const CItemIDList& list) {
    std::wstring path;
    for (const PIDLDATA& record : list.records()) {
        if (!path.empty()) {
            path += L'\\';
        }
        path += local_name(record.get_name());
    }
    return path;
}

} // namespace shell
