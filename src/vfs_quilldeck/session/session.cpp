#include "vfs_quilldeck/session/session.h"

#include "utils/wipe.h"
#include "vfs_quilldeck/session/client.h"
#include "vfs_quilldeck/session/client_cache.h"
#include "vfs_quilldeck/session/companion_process.h"
#include "vfs_quilldeck/session/identity_block.h"
#include "vfs_quilldeck/wire/exceptions.h"

#include <memory>
#include <mutex>

namespace vfs_quilldeck {

utils::slim_lock client_cache_mutex;

namespace {

/// Guarded by `client_cache_mutex`.
std::shared_ptr<client> cached_client;

} // namespace

bool is_logged_in(HMODULE module) {
    try {
        if (!ensure_tray(module, true) || !ensure_session(module, false)) {
            return false;
        }
    } catch (const std::wstring& cause) {
        throw exception(L"Internal error", L"Unable to check/start internal processes: " + cause);
    }
    try {
        return !read_shared_user_info(module).user_id.empty();
    } catch (const exception&) {
        return false;
    }
}

vfs::user_info get_user_info(HMODULE module) {
    if (!is_logged_in(module)) {
        throw exception(L"Get user_info failed", L"Not logged in");
    }
    return read_shared_user_info(module);
}

vfs::client_ptr get_client(HMODULE module) {
    if (!is_logged_in(module)) {
        throw exception(L"Get connection from cache failed", L"Not logged in");
    }
    const std::lock_guard guard(client_cache_mutex);
    const vfs::user_info info = read_shared_user_info(module);
    if (!cached_client || cached_client->get_user_info() != info) {
        cached_client = std::make_shared<client>(info);
    }
    return cached_client;
}

void login(HMODULE module, const std::wstring& user, const std::wstring& password) {
    if (is_logged_in(module)) {
        throw exception(L"Login failed", L"Already logged in");
    }
    const std::lock_guard guard(client_cache_mutex);
    const auto signed_in = std::make_shared<client>(user, password);
    write_shared_user_info(module, signed_in->get_user_info());
    cached_client = signed_in;
}

void new_profile(const std::wstring& user_name, const std::wstring& password,
                 const std::wstring& verify_password, const std::wstring& email,
                 const std::wstring& first_name, const std::wstring& last_name) {
    const http_client service;
    request_params params{
        {L"action", L"new_profile"}, {L"user_name", user_name}, {L"passwd", L""},
        {L"verify_passwd", L""},     {L"email", email},         {L"first_name", first_name},
        {L"last_name", last_name}};
    // Not in the list above, which is copied.
    std::wstring& sent = params[2].second;
    std::wstring& verified = params[3].second;
    const utils::wipe_at_end sent_guard(sent);
    const utils::wipe_at_end verified_guard(verified);
    sent = password;
    verified = verify_password;
    http_client::post_for_reply(service.get_path_prefix() + "/qd_profile.php", params);
}

} // namespace vfs_quilldeck
