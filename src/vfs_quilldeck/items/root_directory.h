#pragma once

#include "vfs_quilldeck/items/pseudo_directory.h"

namespace vfs_quilldeck {

/// The top of a user's tree: the store's own top level, then Shared Folders if somebody shares
/// something with the user, and always the Trash.
class root_directory : public pseudo_directory {
public:
    explicit root_directory(const client& client)
        : pseudo_directory(client, L"dir_root", {}, vfs::folder_root) {}

protected:
    std::vector<vfs::item_ptr> list_items() override;
};

} // namespace vfs_quilldeck
