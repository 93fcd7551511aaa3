#include "vfs_quilldeck/items/shared_folders_container.h"

#include "vfs_quilldeck/items/users_directory.h"

namespace vfs_quilldeck {

std::vector<vfs::item_ptr> shared_folders_container::list_items() {
    const client& client = get_item_link().get_client();
    const reply_node reply = client.operations_request({{L"action", L"list_shared_users"}});
    std::vector<vfs::item_ptr> listed;
    for (const reply_node& node : reply.get_children(L"UserSharedFolder")) {
        listed.push_back(std::make_shared<users_directory>(client, node.get_child_text(L"Name"),
                                                           node.get_child_text(L"UserID")));
    }
    return listed;
}

} // namespace vfs_quilldeck
