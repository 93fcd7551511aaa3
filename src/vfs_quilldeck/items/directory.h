#pragma once

#include "utils/slim_lock.h"
#include "vfs/directory.h"
#include "vfs_quilldeck/items/directory_fields.h"
#include "vfs_quilldeck/items/item.h"
#include "vfs_quilldeck/items/item_cache.h"
#include "vfs_quilldeck/items/item_link.h"
#include "vfs_quilldeck/wire/request_params.h"

#include <atomic>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace vfs_quilldeck {

/// A folder of the user's own tree on the store, and the base of all other remote directories. It
/// keeps its last listing without a time limit: a lookup in a filled cache makes no request, a miss
/// costs one listing. Changes clear or thin the cache after the service has accepted them.
class directory : public vfs::directory, public item {
public:
    directory(item_link link, directory_fields fields);

    std::wstring get_raw_id() const override { return fields_.id; }

    std::wstring get_name() const override { return fields_.name; }

    std::wstring get_id() const override { return L"dir_" + fields_.id; }

    std::wstring get_path() override;
    std::wstring get_description() const override;
    void set_description(const std::wstring& description) override;

    std::int32_t get_type() const override { return vfs::type_directory; }

    vfs::byte_buffer get_thumbnail() override;
    void set_access(std::int32_t access) override;

    std::int32_t get_access() const override { return fields_.access; }

    std::wstring get_link() const override { return fields_.link; }

    vfs::time_seconds get_creation_date() const override { return fields_.creation_date; }

    vfs::time_seconds get_delete_date() const override { return fields_.delete_date; }

    void restore() override;

    std::vector<vfs::item_ptr> get_items() override;

    bool has_subfolders() const override { return fields_.subfolders; }

    bool is_shared() const override { return fields_.shared; }

    bool is_home_folder() const override { return fields_.home_folder; }

    bool is_own_directory() const override { return true; }

    bool is_root_directory() const override { return false; }

    std::uint32_t get_folder_flags() const override { return folder_flags_; }

    void set_folder_flags(std::uint32_t flags) override { folder_flags_ = flags; }

    vfs::item_ptr find_item_by_name(const std::wstring& name, bool refresh) override;
    vfs::item_ptr find_item_by_id(const std::wstring& id, bool refresh) override;
    vfs::item_ptr find_known_item_by_id(const std::wstring& id) override;
    void rename_item(const std::wstring& name, const std::wstring& new_name) override;
    void rename_item(const vfs::item_ptr& item, const std::wstring& new_name) override;
    void delete_item(const std::wstring& name, bool to_trash) override;
    void delete_item(const vfs::item_ptr& item, bool to_trash) override;
    vfs::item_ptr create_file(const std::wstring& name) override;
    vfs::item_ptr create_file_alloc(const std::wstring& name, std::int64_t size) override;
    vfs::item_ptr create_and_open_file(const std::wstring& name, std::int32_t mode,
                                       std::int64_t size) override;
    vfs::item_ptr create_directory(const std::wstring& name) override;

    std::int32_t can_share_with(const std::wstring& username, bool& bEmail) override;
    void sharing(std::int32_t sharewithuser_id) override;
    /// The first argument is the `id` of a `sharewith_item`, whatever the contract's name for it.
    void set_share_mode(std::int32_t sharewithuser_id, std::int32_t mode) override;
    void delete_sharing_with_user(std::int32_t sharedfolder_id) override;
    std::vector<sharewith_item_ptr> get_sharewith_items() override;
    sharewith_item_ptr find_sharewith_item_by_id(std::int32_t id) override;
    sharewith_item_ptr find_sharewith_item_by_userid(std::int32_t sharewithuser_id) override;
    void email_for_sharing(const std::wstring& email) override;

    /// The parameters that name this directory as the destination of a `copy_file`.
    request_params get_copy_target_params() const;

protected:
    /// One round trip: the children as the service lists them, directories before files.
    virtual std::vector<vfs::item_ptr> list_items();
    /// A child of this directory's own family.
    virtual vfs::item_ptr make_directory(const reply_node& node) const;
    virtual vfs::item_ptr make_file(const reply_node& node, const std::wstring& temp_location,
                                    std::int32_t open_mode) const;

    /// The children that a listing reply holds.
    std::vector<vfs::item_ptr> read_items(const reply_node& reply) const;

    const item_link& get_item_link() const { return link_; }

private:
    using look_up = vfs::item_ptr (item_cache::*)(std::wstring_view key);

    vfs::item_ptr find_item(const std::wstring& key, bool refresh, look_up by);
    /// What was in the cache is let go after the lock: there may be much, and some end a transfer.
    void replace_cache(item_cache other);
    vfs::item_ptr create_file_by(const wchar_t* action, const std::wstring& name, std::int64_t size,
                                 std::int32_t open_mode);
    void remove_unopened(const std::wstring& raw_id) const noexcept;
    sharewith_item_ptr find_sharewith(const std::function<bool(const sharewith_item&)>& matches);

    const item_link link_;
    const directory_fields fields_;
    std::atomic<std::uint32_t> folder_flags_ = vfs::folder_initial;
    /// Guards what follows; never held during a request.
    mutable utils::slim_lock cache_lock_;
    std::wstring description_;
    item_cache cache_;
};

} // namespace vfs_quilldeck
