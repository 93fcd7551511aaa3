#include "dialogs/properties/page_choice.h"

#include <algorithm>

namespace dialogs {

namespace {

struct kind {
    bool live;
    bool directory;
    bool root;
    bool own;
};

kind kind_of(const shell::selection& items, const shell::PIDLDATA& record) {
    const vfs::item_ptr known = items.folder->find_known_item_by_id(record.get_id());
    if (!known) {
        return {record.is_live(), record.is_directory(), record.is_root_directory != 0,
                record.is_own_directory != 0};
    }
    const auto directory = std::dynamic_pointer_cast<vfs::directory>(known);
    return {known->get_delete_date() == vfs::time_unknown, directory != nullptr,
            directory && directory->is_root_directory(),
            directory && directory->is_own_directory()};
}

} // namespace

bool has_share_page(const shell::selection& items) {
    if (items.records.size() != 1) {
        return false;
    }
    const kind only = kind_of(items, items.records.front());
    return only.live && only.directory && only.own && !only.root;
}

bool has_sync_page(const shell::selection& items) {
    return std::ranges::all_of(items.records, [&](const shell::PIDLDATA& record) {
        const kind each = kind_of(items, record);
        return each.live && !each.root;
    });
}

} // namespace dialogs
