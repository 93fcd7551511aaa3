/// What every use of the transfer host sets on its libcurl handle.
#pragma once

#include "vfs_quilldeck/transfer/transfer_account.h"
#include "vfs_quilldeck/transfer/transfer_watch.h"

#include <curl/curl.h>

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>

namespace vfs_quilldeck {

/// Sets the account, the security of both channels, the time limit and the URL.
void set_transfer_options(CURL* handle, const transfer_account& account, const std::string& path);

/// What a question for the size of an upload waits for.
struct stored_size_question {
    /// How long the size must stay the same: a server may still be writing what arrived before a
    /// line broke.
    std::chrono::milliseconds rest;
    /// All that was ever sent; a larger size is told as it is, whether it rests or not.
    std::int64_t most = 0;
    /// How long it is asked for in all. What a server had not yet written when the line broke is
    /// written by then.
    std::chrono::milliseconds limit = std::chrono::seconds(transfer_timeout_seconds);
};

/// The bytes that the transfer host holds under `path`, 0 if there is no such file; nothing if that
/// cannot be found out. As long as the size grows it goes on asking. Throws an `exception` when
/// there is no handle or the size grows beyond the question's limit, and what a lack of memory
/// raises.
std::optional<std::int64_t> find_stored_size(const transfer_account& account,
                                             const std::string& path,
                                             const stored_size_question& question);

} // namespace vfs_quilldeck
