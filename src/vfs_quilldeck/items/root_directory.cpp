#include "vfs_quilldeck/items/root_directory.h"

#include "vfs_quilldeck/items/shared_folders_container.h"
#include "vfs_quilldeck/items/trash_directory.h"

#include <string_view>

namespace vfs_quilldeck {

namespace {

std::wstring_view trim_line_feeds(std::wstring_view text) {
    const std::size_t first = text.find_first_not_of(L'\n');
    if (first == std::wstring_view::npos) {
        return {};
    }
    return text.substr(first, text.find_last_not_of(L'\n') - first + 1);
}

} // namespace

std::vector<vfs::item_ptr> root_directory::list_items() {
    const client& client = get_item_link().get_client();
    const reply_node shares = client.operations_request({{L"action", L"has_share_folders"}});
    const bool has_shares = trim_line_feeds(shares.text()) == L"True";
    auto listed = directory::list_items();
    if (has_shares) {
        listed.push_back(std::make_shared<shared_folders_container>(client));
    }
    listed.push_back(std::make_shared<trash_directory>(client));
    return listed;
}

} // namespace vfs_quilldeck
