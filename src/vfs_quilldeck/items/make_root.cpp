#include "vfs_quilldeck/session/make_root.h"

#include "vfs_quilldeck/items/access_root_directory.h"
#include "vfs_quilldeck/items/root_directory.h"

namespace vfs_quilldeck {

vfs::item_ptr make_root(const client& client) {
    if (!client.get_user_info().user_access_id.empty()) {
        return std::make_shared<access_root_directory>(client);
    }
    return std::make_shared<root_directory>(client);
}

} // namespace vfs_quilldeck
