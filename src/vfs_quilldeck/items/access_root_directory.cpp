#include "vfs_quilldeck/items/access_root_directory.h"

#include "vfs_quilldeck/items/access_items.h"

namespace vfs_quilldeck {

std::vector<vfs::item_ptr> access_root_directory::list_items() {
    const client& client = get_item_link().get_client();
    const reply_node reply =
        client.operations_request({{L"action", L"list_dir"}, {L"dir_id", get_raw_id()}});
    std::vector<vfs::item_ptr> listed;
    for (const reply_node& node : reply.get_children(L"Directory")) {
        directory_fields fields = read_directory_fields(node);
        listed.push_back(std::make_shared<access_directory>(
            item_link(client, access_route(fields.id)), std::move(fields)));
    }
    return listed;
}

} // namespace vfs_quilldeck
