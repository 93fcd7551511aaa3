#pragma once

#include "shell_items/item_id_list.h"
#include "vfs/directory.h"

#include <memory>
#include <vector>

namespace shell {

/// Items of one folder of the drive; nothing in it belongs to an apartment. A value, whose copies
/// share the folder.
struct selection {
    std::shared_ptr<vfs::directory> folder; ///< whose children are selected
    CItemIDList list;                       ///< the folder's absolute list
    std::vector<PIDLDATA> records;          ///< one for each selected item
};

} // namespace shell
