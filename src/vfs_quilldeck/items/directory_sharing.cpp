#include "vfs_quilldeck/items/directory.h"
#include "vfs_quilldeck/items/email_address.h"
#include "vfs_quilldeck/wire/exceptions.h"
#include "vfs_quilldeck/wire/reply_fields.h"

#include <boost/format.hpp>

#include <algorithm>
#include <optional>

namespace vfs_quilldeck {

namespace {

/// The id of the account that `key` = `value` names, 0 for one that can receive no share; nothing
/// if the request failed.
std::optional<std::int32_t> ask_user_id(const client& client, const wchar_t* action,
                                        const wchar_t* key, const std::wstring& value) {
    try {
        const reply_node reply = client.operations_request({{L"action", action}, {key, value}});
        return reply.get_child_text(L"UserAccessID").empty() ? get_int(reply, L"UserID") : 0;
    } catch (const vfs::exception&) {
        return std::nullopt;
    }
}

} // namespace

std::int32_t directory::can_share_with(const std::wstring& username, bool& bEmail) {
    bEmail = is_valid_email(username);
    const client& client = get_item_link().get_client();
    auto id = ask_user_id(client, L"get_userid_by_name", L"name", username);
    if (!id && bEmail) {
        id = ask_user_id(client, L"get_userid_by_email", L"email", username);
    }
    return id.value_or(0);
}

void directory::sharing(std::int32_t sharewithuser_id) {
    get_item_link().get_client().operations_request(
        {{L"action", L"share_folder"},
         {L"sharewithuser_id", std::to_wstring(sharewithuser_id)},
         {L"dir_id", get_raw_id()},
         {L"sharemode", L"0"}});
}

void directory::set_share_mode(std::int32_t sharewithuser_id, std::int32_t mode) {
    get_item_link().get_client().operations_request(
        {{L"action", L"change_folder_share_mode"},
         {L"sharedfolder_id", std::to_wstring(sharewithuser_id)},
         {L"sharemode", std::to_wstring(mode)}});
}

void directory::delete_sharing_with_user(std::int32_t sharedfolder_id) {
    get_item_link().get_client().operations_request(
        {{L"action", L"delete_sharing_with_user"},
         {L"sharedfolder_id", std::to_wstring(sharedfolder_id)}});
}

std::vector<vfs::directory::sharewith_item_ptr> directory::get_sharewith_items() {
    // The action's spelling is the service's.
    const reply_node reply = get_item_link().get_client().operations_request(
        {{L"action", L"list_share_whith_users"}, {L"dir_id", get_raw_id()}});
    std::vector<sharewith_item_ptr> found;
    for (const reply_node& node : reply.get_children(L"ShareWithUser")) {
        found.push_back(std::make_shared<sharewith_item>(sharewith_item{
            .id = get_int(node, L"ID"),
            .sharewithuser_id = get_int(node, L"ShareWithUserID"),
            .name = node.get_child_text(L"Name"),
            .share_mode = get_int(node, L"ShareMode"),
        }));
    }
    return found;
}

vfs::directory::sharewith_item_ptr
directory::find_sharewith(const std::function<bool(const sharewith_item&)>& matches) {
    const auto items = get_sharewith_items();
    const auto found = std::ranges::find_if(
        items, [&matches](const sharewith_item_ptr& item) { return matches(*item); });
    if (found == items.end()) {
        const auto text = L"Sharing error: The user sharing folder '%1%' is not found";
        throw item_not_found_exception(L"Item not found",
                                       (boost::wformat(text) % get_name()).str());
    }
    return *found;
}

vfs::directory::sharewith_item_ptr directory::find_sharewith_item_by_id(std::int32_t id) {
    return find_sharewith([id](const sharewith_item& item) { return item.id == id; });
}

vfs::directory::sharewith_item_ptr
directory::find_sharewith_item_by_userid(std::int32_t sharewithuser_id) {
    return find_sharewith([sharewithuser_id](const sharewith_item& item) {
        return item.sharewithuser_id == sharewithuser_id;
    });
}

void directory::email_for_sharing(const std::wstring& email) {
    get_item_link().get_client().operations_request(
        {{L"action", L"share_folder"}, {L"dir_id", get_raw_id()}, {L"email", email}});
}

} // namespace vfs_quilldeck
