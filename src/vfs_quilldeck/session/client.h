#pragma once

#include "vfs/client.h"
#include "vfs_quilldeck/transfer/transfer_account.h"
#include "vfs_quilldeck/wire/http_client.h"

#include <atomic>
#include <memory>
#include <string>
#include <vector>

namespace vfs_quilldeck {

/// A signed-in connection to the store. It is a value: a copy makes no request, and every remote
/// item holds one, so that an item can be used on any thread and outlives any change of the
/// process's client. What never changes after construction is shared by the copies.
class client : public vfs::client, public http_client {
public:
    /// Signs in. Throws the service's failure, or a standard exception for transfer data that
    /// cannot be of this service.
    client(const std::wstring& user, const std::wstring& password);
    /// Takes up the session of `info` without any secret.
    explicit client(const vfs::user_info& info);
    client(const client& other);
    client& operator=(const client&) = delete;
    ~client() override = default;

    vfs::user_info get_user_info() const override;
    vfs::item_ptr get_root() override;
    /// Holds the process's client lock during the whole walk.
    vfs::item_ptr get_directory(const std::wstring& path, bool create) override;
    std::vector<vfs::notification> get_user_notifications() override;
    vfs::storage_info get_storage_info() override;
    std::vector<vfs::pro_setting> get_pro_settings() override;
    void set_pro_setting(const std::wstring& name, double value) override;
    void set_pro_setting(const std::wstring& name, std::int32_t value) override;
    void set_pro_setting(const std::wstring& name, const std::wstring& value) override;

    /// One request to "/qd_operations.php" with the identity of the session behind `params`.
    reply_node operations_request(request_params params) const;
    /// One request to "/qd_email.php"; the reply as it came, to be judged by the caller.
    std::wstring email_request(request_params params) const;
    /// The JPEG bytes of a file's thumbnail; `shared_user_id` is empty for a file of the user's
    /// own.
    vfs::byte_buffer get_thumbnail(const std::wstring& shared_user_id,
                                   const std::wstring& file_id) const;

    std::string get_host() const { return session_->account->host; }

    std::string get_transfer_user() const { return session_->account->user; }

    std::string get_transfer_password() const { return session_->account->password; }

    std::int64_t get_upload_speed_limit() const { return session_->account->upload_speed_limit; }

    std::int64_t get_download_speed_limit() const {
        return session_->account->download_speed_limit;
    }

    /// All five of them, shared with the streams of the session's files.
    const std::shared_ptr<const transfer_account>& get_transfer_account() const {
        return session_->account;
    }

private:
    struct session {
        vfs::user_info info;
        std::shared_ptr<const transfer_account> account;
    };

    session log_in(const std::wstring& user, const std::wstring& password) const;
    session restore(const vfs::user_info& info) const;
    static session read_session(const reply_node& reply, std::vector<std::wstring>& key_parts);
    request_params get_identity_params() const;
    void set_pro_setting(const std::wstring& name, const std::wstring& value,
                         const std::wstring& type);

    /// Built at the first `get_root` of this copy; the copies made after that share it.
    std::atomic<vfs::item_ptr> root_;
    std::shared_ptr<const session> session_;
};

} // namespace vfs_quilldeck
