#pragma once

#include <cstdint>
#include <string>

namespace vfs_quilldeck {

/// Where and as whom the bytes of files travel, and how fast. UTF-8. Empty texts: the session works
/// and only file transfers fail.
struct transfer_account {
    std::string host; ///< a URL prefix: a location is put directly behind it
    std::string user;
    std::string password;
    std::int64_t upload_speed_limit = 0;   ///< bytes per second; 0 or less is no limit
    std::int64_t download_speed_limit = 0; ///< bytes per second; 0 or less is no limit
};

} // namespace vfs_quilldeck
