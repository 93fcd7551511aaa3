/// Folders that a guest session's access id opens, and their files.
#pragma once

#include "vfs_quilldeck/items/family_directory.h"
#include "vfs_quilldeck/items/file.h"

#include <memory>
#include <string>

namespace vfs_quilldeck {

/// The route through an access: the raw id of its top folder.
inline item_link::route_ptr access_route(const std::wstring& access_dir_id) {
    return std::make_shared<const request_params>(
        request_params{{L"access_dir_id", access_dir_id}});
}

class access_file : public file {
public:
    using file::file;

    std::shared_ptr<vfs::file> duplicate() const override {
        return std::make_shared<access_file>(get_record());
    }
};

class access_directory : public family_directory<access_directory, access_file> {
public:
    using family_directory::family_directory;
};

} // namespace vfs_quilldeck
