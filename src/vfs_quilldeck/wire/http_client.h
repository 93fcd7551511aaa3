#pragma once

#include "vfs_quilldeck/wire/reply_buffer.h"
#include "vfs_quilldeck/wire/reply_node.h"
#include "vfs_quilldeck/wire/request_params.h"

#include <memory>
#include <string>

namespace vfs_quilldeck {

/// The request layer: one HTTPS form POST, answered by a small document. Any number of POSTs run at
/// once, on the threads of their callers, each on a pooled handle of its own. All failures are
/// `exception` or derived from it.
class http_client {
public:
    /// Asks the service for `path_prefix`, which stands before the path of every later request.
    http_client();

    /// One attempt; `path` goes behind the base URL as it stands.
    static reply_buffer post(const std::string& path, const request_params& params);
    /// Up to `attempts` attempts, without a pause. A reply that arrived is never asked for again.
    static reply_buffer post_retrying(const std::string& path, const request_params& params,
                                      int attempts);
    static shared_reply post_for_bytes(const std::string& path, const request_params& params);
    static std::wstring post_for_text(const std::string& path, const request_params& params);
    /// The parsed reply. An `Error` element in it is thrown in the service's own words:
    /// `item_already_exists_exception` for `Type` 1, otherwise `exception`.
    static reply_node post_for_reply(const std::string& path, const request_params& params);

    std::string get_path_prefix() const { return *path_prefix_; }

private:
    /// Never changes once it is there, so the copies of a client share it.
    std::shared_ptr<const std::string> path_prefix_;
};

/// Throws the failure that a reply's first `Error` element tells, if it has one; with
/// `heed_type` false it is always the plain `exception`.
void throw_error_of(const reply_node& reply, bool heed_type = true);

} // namespace vfs_quilldeck
