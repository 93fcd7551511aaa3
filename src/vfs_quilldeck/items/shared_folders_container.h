#pragma once

#include "vfs_quilldeck/items/pseudo_directory.h"

namespace vfs_quilldeck {

/// Holds one `users_directory` for each user who shares something with this one.
class shared_folders_container : public pseudo_directory {
public:
    explicit shared_folders_container(const client& client)
        : pseudo_directory(client, L"dir_shared_folders_container", L"Shared Folders",
                           vfs::folder_shared_container) {}

protected:
    std::vector<vfs::item_ptr> list_items() override;
};

} // namespace vfs_quilldeck
