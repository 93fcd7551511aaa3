#include "vfs_quilldeck/session/client.h"
#include "vfs_quilldeck/wire/exceptions.h"
#include "vfs_quilldeck/wire/program_version.h"
#include "vfs_quilldeck/wire/reply_fields.h"
#include "vfs_quilldeck/wire/text_encoding.h"

#include <boost/format.hpp>

#include <string_view>

namespace vfs_quilldeck {

std::vector<vfs::notification> client::get_user_notifications() {
    const reply_node reply = operations_request({{L"action", L"get_user_notifications"},
                                                 {L"version", program_version},
                                                 {L"pro_version", L""}});
    std::vector<vfs::notification> found;
    for (const reply_node& node : reply.get_children(L"Notification")) {
        found.push_back({node.get_child_text(L"Title"), node.get_child_text(L"Text"),
                         node.get_child_text(L"URL")});
    }
    return found;
}

vfs::storage_info client::get_storage_info() {
    const reply_node reply = operations_request({{L"action", L"get_storage_info"}});
    return {get_int64(reply, L"Capacity"), get_int64(reply, L"SpaceUsed"),
            get_int64(reply, L"SpaceFree")};
}

std::vector<vfs::pro_setting> client::get_pro_settings() {
    const reply_node reply = operations_request({{L"action", L"get_pro_settings"}});
    std::vector<vfs::pro_setting> found;
    for (const reply_node& node : reply.get_children(L"ProSetting")) {
        found.push_back(
            {node.get_child_text(L"Name"), node.get_child_text(L"Value"), get_int(node, L"Type")});
    }
    return found;
}

void client::set_pro_setting(const std::wstring& name, double value) {
    set_pro_setting(name, (boost::wformat(L"%1%") % value).str(), L"2");
}

void client::set_pro_setting(const std::wstring& name, std::int32_t value) {
    set_pro_setting(name, std::to_wstring(value), L"1");
}

void client::set_pro_setting(const std::wstring& name, const std::wstring& value) {
    set_pro_setting(name, value, L"0");
}

void client::set_pro_setting(const std::wstring& name, const std::wstring& value,
                             const std::wstring& type) {
    operations_request({{L"setting_name", name},
                        {L"setting_value", value},
                        {L"setting_type", type},
                        {L"action", L"set_pro_setting"}});
}

std::wstring client::email_request(request_params params) const {
    append(params, get_identity_params());
    return post_for_text(get_path_prefix() + "/qd_email.php", params);
}

vfs::byte_buffer client::get_thumbnail(const std::wstring& shared_user_id,
                                       const std::wstring& file_id) const {
    constexpr std::size_t shortest_reply = 10;
    request_params params = get_identity_params();
    append(params, {{L"shared_user_id", shared_user_id}, {L"file_id", file_id}});
    const shared_reply reply = post_for_bytes(get_path_prefix() + "/qd_thumbnail.php", params);
    const std::string_view bytes = reply->view();
    if (bytes.size() < shortest_reply) {
        throw exception(L"Thumbnail request failed", L"Wrong response");
    }
    if (bytes.substr(6, 4) != "JFIF") {
        throw_error_of(reply_node::parse(reply), false);
    }
    return {bytes.begin(), bytes.end()};
}

} // namespace vfs_quilldeck
