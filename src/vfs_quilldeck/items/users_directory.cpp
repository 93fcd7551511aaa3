#include "vfs_quilldeck/items/users_directory.h"

#include "vfs_quilldeck/items/shared_items.h"

namespace vfs_quilldeck {

std::vector<vfs::item_ptr> users_directory::list_items() {
    const client& client = get_item_link().get_client();
    const reply_node reply = client.operations_request(
        {{L"action", L"list_shared_directories"}, {L"share_user_id", user_id_}});
    std::vector<vfs::item_ptr> listed;
    for (const reply_node& node : reply.get_children(L"SharedDirectory")) {
        directory_fields fields = read_directory_fields(node);
        fields.deleteable = false;
        fields.renameable = false;
        fields.shared = false;
        fields.delete_date = vfs::time_unknown;
        listed.push_back(std::make_shared<shared_directory>(
            item_link(client, share_route(user_id_, fields.id)), std::move(fields)));
    }
    return listed;
}

} // namespace vfs_quilldeck
