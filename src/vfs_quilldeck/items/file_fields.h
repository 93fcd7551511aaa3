#pragma once

#include "vfs/records.h"
#include "vfs_quilldeck/wire/reply_node.h"

#include <cstdint>
#include <string>

namespace vfs_quilldeck {

/// What a listing tells of a file.
struct file_fields {
    std::wstring id{};
    std::wstring name{};
    std::wstring link{};
    std::wstring direct_link{};
    std::wstring location{}; ///< path on the transfer host
    std::wstring description{};
    std::int32_t access = vfs::access_private;
    double price = 0;
    std::int64_t size = 0;
    vfs::time_seconds access_date = vfs::time_unknown;
    vfs::time_seconds modification_date = vfs::time_unknown;
    vfs::time_seconds delete_date = vfs::time_unknown;
};

/// Reads a `File` element.
file_fields read_file_fields(const reply_node& node);

} // namespace vfs_quilldeck
