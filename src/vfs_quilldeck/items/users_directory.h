#pragma once

#include "vfs_quilldeck/items/pseudo_directory.h"

#include <string>

namespace vfs_quilldeck {

/// What one other user shares with this one.
class users_directory : public pseudo_directory {
public:
    /// `user_id` is that of the sharing user.
    users_directory(const client& client, const std::wstring& name, const std::wstring& user_id)
        : pseudo_directory(client, L"dir_ud_" + user_id, name, vfs::folder_users),
          user_id_(user_id) {}

    std::wstring get_raw_id() const override { return user_id_; }

protected:
    std::vector<vfs::item_ptr> list_items() override;

private:
    const std::wstring user_id_;
};

} // namespace vfs_quilldeck
