#include "syncer/manager.h"

#include "syncer/binding_manager.h"
#include "syncer/exceptions.h"
#include "syncer/user_directory.h"
#include "utils/filesystem.h"
#include "utils/narrow.h"

#include <source_location>

namespace syncer {

void manager::force_sync(const std::wstring& user_name, const binding& forced, bool flag) {
    binding_manager transaction(user_name, true);
    transaction.set_force_sync_once(forced, flag);
    transaction.commit();
}

binding_set manager::get_bindings(const std::wstring& user_name) {
    return binding_manager(user_name, true).get_bindings();
}

void manager::remove_binding(const std::wstring& user_name, const binding& removed) {
    binding_manager transaction(user_name, true);
    transaction.remove_binding(removed);
    transaction.commit();
}

std::filesystem::path manager::get_files_saved_directory(const std::wstring& user_name) {
    const std::filesystem::path directory =
        user_directory(user_name, L"files_saved", std::source_location::current().function_name());
    check_create_directory(directory);
    return directory;
}

void manager::check_create_directory(const std::filesystem::path& path) {
    if (utils::filesystem::exists(path)) {
        return;
    }
    // Nothing is created either when another process did it at the same time.
    if (!std::filesystem::create_directories(path) && !utils::filesystem::exists(path)) {
        throw create_directory_exception(std::source_location::current().function_name(),
                                         utils::narrow(path.native()) + " can not be created");
    }
}

} // namespace syncer
