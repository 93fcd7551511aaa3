#include "vfs_quilldeck/session/client.h"

#include "utils/wipe.h"
#include "vfs/directory.h"
#include "vfs_quilldeck/session/client_cache.h"
#include "vfs_quilldeck/session/make_root.h"
#include "vfs_quilldeck/session/pc_id.h"
#include "vfs_quilldeck/transfer/transfer_credentials.h"
#include "vfs_quilldeck/wire/exceptions.h"
#include "vfs_quilldeck/wire/program_version.h"
#include "vfs_quilldeck/wire/reply_fields.h"

#include <boost/format.hpp>

#include <algorithm>
#include <mutex>
#include <utility>

namespace vfs_quilldeck {

namespace {

constexpr auto operations_path = "/qd_operations.php";

/// Of the password among the parameters of a login.
constexpr std::size_t password_place = 2;

/// The four parameters that every request of a session ends with.
request_params identity_params(const vfs::user_info& info) {
    return {{L"user_id", info.user_id},
            {L"user_id_access", info.user_access_id},
            {L"user_lang", info.user_lang},
            {L"user_level", info.user_level}};
}

request_params login_params(const std::wstring& user, const std::wstring& password) {
    request_params params{{L"action", L"login"}, {L"user", user},
                          {L"pass", L""},        {L"version", program_version},
                          {L"pro_version", L""}, {L"pcid", read_pc_id()}};
    append(params, identity_params({}));
    // At last, so that lists that grow and move leave no copy of it.
    params[password_place].second = password;
    return params;
}

/// The level stands before the language here, unlike in all other requests.
request_params restore_params(const vfs::user_info& info) {
    return {{L"action", L"restore_session"},
            {L"user_id", info.user_id},
            {L"user_id_access", info.user_access_id},
            {L"user_level", info.user_level},
            {L"user_lang", info.user_lang}};
}

std::vector<std::wstring> elements_of(const std::wstring& path) {
    std::vector<std::wstring> elements;
    std::size_t from = 0;
    while (from < path.size()) {
        const std::size_t to = std::min(path.find_first_of(L"/\\", from), path.size());
        if (to > from) {
            elements.push_back(path.substr(from, to - from));
        }
        from = to + 1;
    }
    return elements;
}

/// The child directory of that name; null when there is none and none may be made, or when the name
/// is that of a file.
std::shared_ptr<vfs::directory> step_into(vfs::directory& current, const std::wstring& name,
                                          bool create) {
    try {
        return std::dynamic_pointer_cast<vfs::directory>(current.find_item_by_name(name, false));
    } catch (const vfs::item_not_found_exception&) {
        if (!create) {
            return nullptr;
        }
    }
    return std::dynamic_pointer_cast<vfs::directory>(current.create_directory(name));
}

} // namespace

client::session client::read_session(const reply_node& reply,
                                     std::vector<std::wstring>& key_parts) {
    transfer_account account;
    account.upload_speed_limit = get_int64(reply, L"UploadSpeedLimit");
    account.download_speed_limit = get_int64(reply, L"DownloadSpeedLimit");
    vfs::user_info info{reply.get_child_text(L"UserID"), reply.get_child_text(L"UserAccessID"),
                        reply.get_child_text(L"UserName"), reply.get_child_text(L"UserLang"),
                        reply.get_child_text(L"UserLevel")};
    if (key_parts.size() < 3) {
        key_parts.push_back(info.user_id);
    }
    try {
        transfer_credentials found = decode_transfer_data(reply.get_child_text(L"Data"), key_parts);
        account.host = std::move(found.host);
        account.user = std::move(found.user);
        account.password = std::move(found.password);
    } catch (const exception&) {
        // The session works without a transfer account; only file transfers fail.
    }
    return {std::move(info), std::make_shared<const transfer_account>(std::move(account))};
}

client::session client::log_in(const std::wstring& user, const std::wstring& password) const {
    request_params params = login_params(user, password);
    const utils::wipe_at_end sent(params[password_place].second);
    std::vector<std::wstring> key_parts;
    key_parts.reserve(3); // with the one that the reply brings
    key_parts.push_back(user);
    key_parts.push_back(password);
    const utils::wipe_at_end key(key_parts[1]);
    return read_session(post_for_reply(get_path_prefix() + operations_path, params), key_parts);
}

client::session client::restore(const vfs::user_info& info) const {
    std::vector<std::wstring> key_parts{L"0", L"0", info.user_id};
    return read_session(post_for_reply(get_path_prefix() + operations_path, restore_params(info)),
                        key_parts);
}

client::client(const std::wstring& user, const std::wstring& password)
    : session_(std::make_shared<const session>(log_in(user, password))) {}

client::client(const vfs::user_info& info)
    : session_(std::make_shared<const session>(restore(info))) {}

client::client(const client& other)
    : vfs::client(other), http_client(other), root_(other.root_.load()), session_(other.session_) {}

vfs::user_info client::get_user_info() const {
    return session_->info;
}

vfs::item_ptr client::get_root() {
    vfs::item_ptr root = root_.load();
    if (!root) {
        const vfs::item_ptr made = make_root(*this);
        if (root_.compare_exchange_strong(root, made)) {
            root = made;
        }
    }
    return root;
}

vfs::item_ptr client::get_directory(const std::wstring& path, bool create) {
    if (path.empty()) {
        throw exception(L"Empty path provided", L"File system error: empty path provided");
    }
    auto current = std::dynamic_pointer_cast<vfs::directory>(make_root(*this));
    const std::lock_guard guard(client_cache_mutex);
    for (const std::wstring& element : elements_of(path)) {
        current = step_into(*current, element, create);
        if (!current) {
            const auto text =
                L"File system error: directory '%1%' not found and can not be created";
            throw exception(L"Directory not found and can not be created",
                            (boost::wformat(text) % path).str());
        }
    }
    return current;
}

request_params client::get_identity_params() const {
    return identity_params(session_->info);
}

reply_node client::operations_request(request_params params) const {
    append(params, get_identity_params());
    return post_for_reply(get_path_prefix() + operations_path, params);
}

} // namespace vfs_quilldeck
