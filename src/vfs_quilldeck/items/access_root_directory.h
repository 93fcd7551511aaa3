#pragma once

#include "vfs_quilldeck/items/pseudo_directory.h"

namespace vfs_quilldeck {

/// The top of a guest session: the folders that its access id opens.
class access_root_directory : public pseudo_directory {
public:
    explicit access_root_directory(const client& client)
        : pseudo_directory(client, L"dir_root", {}, vfs::folder_root) {}

protected:
    std::vector<vfs::item_ptr> list_items() override;
};

} // namespace vfs_quilldeck
