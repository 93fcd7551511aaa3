#pragma once

#include "vfs/records.h"
#include "vfs_quilldeck/wire/reply_node.h"

#include <cstdint>
#include <string>

namespace vfs_quilldeck {

/// What a listing tells of a directory. It stays as it was listed: a renamed directory is stale
/// until its parent is listed again.
struct directory_fields {
    std::wstring id{};
    std::wstring name{};
    std::wstring description{};
    std::wstring link{};
    std::int32_t access = vfs::access_private;
    bool is_gallery = false;
    bool is_mp3 = false;
    bool home_folder = false;
    bool renameable = false;
    bool deleteable = false;
    bool subfolders = false;
    bool shared = false;
    vfs::time_seconds creation_date = vfs::time_unknown;
    vfs::time_seconds delete_date = vfs::time_unknown;
};

/// Reads a `Directory` element.
directory_fields read_directory_fields(const reply_node& node);

} // namespace vfs_quilldeck
