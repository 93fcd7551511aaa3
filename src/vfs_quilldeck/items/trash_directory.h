#pragma once

#include "vfs_quilldeck/items/pseudo_directory.h"

namespace vfs_quilldeck {

/// The items that wait to be restored or deleted for good. They are ordinary ones with a delete
/// date.
class trash_directory : public pseudo_directory {
public:
    explicit trash_directory(const client& client)
        : pseudo_directory(client, L"dir_trash", L"Trash", vfs::folder_trash) {}

protected:
    std::vector<vfs::item_ptr> list_items() override {
        return read_items(
            get_item_link().get_client().operations_request({{L"action", L"list_trash_dir"}}));
    }
};

} // namespace vfs_quilldeck
