#pragma once

#include "vfs/item.h"

#include <cstddef>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace vfs_quilldeck {

/// The children of a directory as they were last listed. The first look-up by a key sorts that key
/// of all children, so that the next ones cost the same in a directory of any size. Keys are
/// compared without regard to case in ASCII; of equal ones the child that was listed first is
/// found. Its user locks.
class item_cache {
public:
    item_cache() = default;

    explicit item_cache(std::vector<vfs::item_ptr> listed) : items_(std::move(listed)) {}

    /// Null when no child has that name.
    vfs::item_ptr find_by_name(std::wstring_view name) { return find(names_, name); }

    vfs::item_ptr find_by_id(std::wstring_view id) { return find(ids_, id); }

    /// Takes out `item`, or the child that shows the same item of the store, and answers it: its
    /// end may be long, and is for the caller to place. Null when there is none.
    vfs::item_ptr remove(const vfs::item_ptr& item);

private:
    /// A child by the hash of its key. The keys themselves are not kept: each child has them.
    struct entry {
        std::size_t hash;
        std::size_t position;

        auto operator<=>(const entry&) const = default;
    };

    struct index {
        std::wstring (vfs::item::*get_key)() const;
        std::vector<entry> entries{};
    };

    void sort(index& keys) const;
    /// The place of the first child with that key which `accepts` takes; null without one.
    template <class Accepts>
    vfs::item_ptr* find_place(index& keys, std::wstring_view key, const Accepts& accepts);
    vfs::item_ptr find(index& keys, std::wstring_view key);

    std::vector<vfs::item_ptr> items_; ///< null where one was taken out
    index names_{&vfs::item::get_name};
    index ids_{&vfs::item::get_id};
};

} // namespace vfs_quilldeck
