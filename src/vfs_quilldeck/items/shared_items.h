/// Folders that another user shares with this one, and their files.
#pragma once

#include "vfs_quilldeck/items/family_directory.h"
#include "vfs_quilldeck/items/file.h"

#include <memory>
#include <string>

namespace vfs_quilldeck {

/// The route through a share: the sharing user, and the raw id of the share's top folder.
inline item_link::route_ptr share_route(const std::wstring& share_user_id,
                                        const std::wstring& share_id) {
    return std::make_shared<const request_params>(
        request_params{{L"share_user_id", share_user_id}, {L"share_id", share_id}});
}

class shared_file : public file {
public:
    using file::file;

    std::shared_ptr<vfs::file> duplicate() const override {
        return std::make_shared<shared_file>(get_record());
    }

protected:
    std::wstring get_thumbnail_user_id() const override {
        return get_item_link().get_route()->front().second;
    }
};

class shared_directory : public family_directory<shared_directory, shared_file> {
public:
    using family_directory::family_directory;
};

} // namespace vfs_quilldeck
