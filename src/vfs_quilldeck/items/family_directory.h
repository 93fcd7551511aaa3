#pragma once

#include "vfs_quilldeck/items/directory.h"
#include "vfs_quilldeck/items/file_fields.h"

#include <string>

namespace vfs_quilldeck {

/// A directory that is reached through a share or an access. Its requests differ from those of the
/// user's own tree by the route in its link alone; the last parameter of the route is the raw id of
/// the top folder. Its children are of the same family; a listing tells neither a delete date nor a
/// sharing of them.
template <class Self, class File>
class family_directory : public directory {
public:
    using directory::directory;

    bool is_own_directory() const override { return false; }

    /// The top behaves as a root, what lies below it does not.
    bool is_root_directory() const override {
        return get_raw_id() == get_item_link().get_route()->back().second;
    }

    std::uint32_t get_folder_flags() const override { return 0; }

    void set_folder_flags(std::uint32_t) override {}

protected:
    vfs::item_ptr make_directory(const reply_node& node) const override {
        directory_fields fields = read_directory_fields(node);
        fields.shared = false;
        fields.delete_date = vfs::time_unknown;
        return std::make_shared<Self>(get_item_link(), std::move(fields));
    }

    vfs::item_ptr make_file(const reply_node& node, const std::wstring& temp_location,
                            std::int32_t open_mode) const override {
        file_fields fields = read_file_fields(node);
        fields.delete_date = vfs::time_unknown;
        return std::make_shared<File>(get_item_link(), std::move(fields), temp_location, open_mode);
    }
};

} // namespace vfs_quilldeck
