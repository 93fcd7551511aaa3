#pragma once

#include "vfs/item.h"

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace vfs {

/// An item that holds others. Any thread may call any operation at any time.
class directory : public item {
public:
    /// One user with whom a directory is shared.
    struct sharewith_item {
        std::int32_t id = 0;               ///< of the sharing itself
        std::int32_t sharewithuser_id = 0; ///< of the other user
        std::wstring name;
        std::int32_t share_mode = 0; ///< 0 View, 1 Full
    };

    using sharewith_item_ptr = std::shared_ptr<sharewith_item>;

    /// The present children; on a remote directory a round trip that refills the child cache.
    virtual std::vector<item_ptr> get_items() = 0;
    /// At least one child is a directory.
    virtual bool has_subfolders() const = 0;
    virtual bool is_shared() const = 0;
    /// The account's home folder.
    virtual bool is_home_folder() const = 0;
    /// An ordinary directory of the user's own tree, which may be shared.
    virtual bool is_own_directory() const = 0;
    /// A root, a pseudo-directory or the top of a share.
    virtual bool is_root_directory() const = 0;
    /// A mask of `folder_flag`.
    virtual std::uint32_t get_folder_flags() const = 0;
    virtual void set_folder_flags(std::uint32_t flags) = 0;
    /// The first child of that name, compared without regard to case in ASCII. With `refresh` the
    /// directory is listed first. Throws `item_not_found_exception`.
    virtual item_ptr find_item_by_name(const std::wstring& name, bool refresh) = 0;
    /// The same by `get_id`.
    virtual item_ptr find_item_by_id(const std::wstring& id, bool refresh) = 0;

    /// The child of that id as the directory knows it without asking anybody; null where it does
    /// not. Of a directory that keeps no children nothing is known.
    virtual item_ptr find_known_item_by_id(const std::wstring&) { return nullptr; }

    virtual void rename_item(const std::wstring& name, const std::wstring& new_name) = 0;
    virtual void rename_item(const item_ptr& item, const std::wstring& new_name) = 0;
    /// Moves a child to the Trash or, with `to_trash` false, deletes it for good.
    virtual void delete_item(const std::wstring& name, bool to_trash) = 0;
    virtual void delete_item(const item_ptr& item, bool to_trash) = 0;
    /// A new empty file.
    virtual item_ptr create_file(const std::wstring& name) = 0;
    /// A new file with its size in bytes announced.
    virtual item_ptr create_file_alloc(const std::wstring& name, std::int64_t size) = 0;
    /// A new file, open already in `mode`, a mask of `open_mode`.
    virtual item_ptr create_and_open_file(const std::wstring& name, std::int32_t mode,
                                          std::int64_t size) = 0;
    virtual item_ptr create_directory(const std::wstring& name) = 0;
    /// The numeric id of the user of that name or address, 0 if nobody there can receive a share.
    /// Sets `bEmail` to whether `username` has the form of an address. Never throws an `exception`.
    virtual std::int32_t can_share_with(const std::wstring& username, bool& bEmail) = 0;
    /// Shares this directory with that user.
    virtual void sharing(std::int32_t sharewithuser_id) = 0;
    virtual void set_share_mode(std::int32_t sharewithuser_id, std::int32_t mode) = 0;
    virtual void delete_sharing_with_user(std::int32_t sharedfolder_id) = 0;
    virtual std::vector<sharewith_item_ptr> get_sharewith_items() = 0;
    /// By `sharewith_item::id`; throws `item_not_found_exception`.
    virtual sharewith_item_ptr find_sharewith_item_by_id(std::int32_t id) = 0;
    /// By `sharewith_item::sharewithuser_id`; throws `item_not_found_exception`.
    virtual sharewith_item_ptr find_sharewith_item_by_userid(std::int32_t sharewithuser_id) = 0;
    /// Invites an address that has no account.
    virtual void email_for_sharing(const std::wstring& email) = 0;
};

} // namespace vfs
