/// What every use of the transfer host sets on its libcurl handle.
#pragma once

#include "vfs_quilldeck/transfer/transfer_account.h"

#include <curl/curl.h>

#include <cstdint>
#include <optional>
#include <string>

namespace vfs_quilldeck {

/// Seconds without a hand-over after which a transfer is given up.
inline constexpr long transfer_timeout_seconds = 60;

/// Sets the account, the security of both channels, the time limit and the URL.
void set_transfer_options(CURL* handle, const transfer_account& account, const std::string& path);

/// The bytes that the transfer host holds under `path`, 0 if there is no such file; nothing if that
/// cannot be found out, or if it does not come to rest: a server may still be writing what arrived
/// before a line broke.
std::optional<std::int64_t> find_stored_size(const transfer_account& account,
                                             const std::string& path);

} // namespace vfs_quilldeck
