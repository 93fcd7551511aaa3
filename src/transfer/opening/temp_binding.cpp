#include "transfer/opening/temp_binding.h"

#include "syncer/binding_manager.h"

namespace transfer {

bool has_path_of_its_own(const vfs::directory& folder, bool guest) {
    constexpr std::uint32_t elsewhere =
        vfs::folder_shared_container | vfs::folder_users | vfs::folder_trash;
    const std::uint32_t flags = folder.get_folder_flags();
    if ((flags & elsewhere) != 0 || folder.get_delete_date() != vfs::time_unknown) {
        return false;
    }
    return folder.is_own_directory() || (flags & vfs::folder_root) != 0 || guest;
}

void create_temp_binding(const std::wstring& user_name, const std::wstring& folder_path,
                         const std::filesystem::path& local) {
    const std::wstring remote = syncer::remote_path_of(folder_path);
    const std::wstring name = local.filename().native();
    syncer::binding_manager transaction(user_name, true);
    if (transaction.has_binding(remote, local.parent_path(), name)) {
        transaction.remove_binding(remote, local.parent_path(), name);
    }
    transaction.add_binding({remote, local.parent_path(), name, syncer::binding_mode::edited_copy,
                             syncer::binding_type::temporary, L"", 0, syncer::edited_copy_rule});
    transaction.save();
}

} // namespace transfer
