#include "dialogs/properties/item_changes.h"

#include "resources/string_ids.h"
#include "shell_items/change_notice.h"
#include "vfs/vfs.h"

#include <shlobj.h>

namespace dialogs {

namespace {

void rename(item_changes& changes, const std::wstring& name) {
    shell::PIDLDATA& record = changes.items.records.front();
    const std::wstring old_name = record.get_name();
    // A user who has typed the old name again, or for whom only a later step failed.
    if (name == old_name) {
        return;
    }
    const shell::CItemIDList old_list = changes.items.list + shell::CItemIDList(record);
    changes.items.folder->rename_item(old_name, name);
    record.set_name(name);
    shell::notify_change(record.is_directory() ? SHCNE_RENAMEFOLDER : SHCNE_RENAMEITEM, old_list,
                         changes.items.list + shell::CItemIDList(record));
}

/// Calls `set` for each item until the user has gone.
template <class Set>
void for_each_item(const item_changes& changes, const Set& set) {
    for (const shell::PIDLDATA& record : changes.items.records) {
        if (changes.stop) {
            return;
        }
        set(changes.items.folder->find_item_by_id(record.get_id(), false));
    }
}

void set_access(item_changes& changes, const std::int32_t& access) {
    for_each_item(changes, [&](const vfs::item_ptr& item) { item->set_access(access); });
    // Items tell the new value after the next listing only, which a view of the folder makes now.
    shell::notify_change(SHCNE_UPDATEDIR, changes.items.list);
}

void set_description(item_changes& changes, const std::wstring& description) {
    for_each_item(changes, [&](const vfs::item_ptr& item) { item->set_description(description); });
}

/// An item that has no price.
class no_file {};

void set_price(item_changes& changes, const double& price) {
    for_each_item(changes, [&](const vfs::item_ptr& item) {
        const auto file = std::dynamic_pointer_cast<vfs::file>(item);
        if (!file) {
            throw no_file();
        }
        file->set_price(price);
    });
}

/// Takes the step whose value there is.
template <class Value>
void carry_out(item_changes& changes, const std::optional<Value>& value, UINT caption,
               void (*step)(item_changes&, const Value&)) {
    if (!value) {
        return;
    }
    try {
        step(changes, *value);
    } catch (const vfs::exception&) {
        changes.failures.push_back({caption, std::current_exception()});
    } catch (const no_file&) {
        changes.failures.push_back({caption, nullptr});
    }
}

} // namespace

void store(item_changes& changes) {
    carry_out(changes, changes.name, IDS_DESCRIPTION_FAILED, &rename);
    carry_out(changes, changes.access, IDS_PERMISSIONS_FAILED, &set_access);
    carry_out(changes, changes.description, IDS_DESCRIPTION_FAILED, &set_description);
    carry_out(changes, changes.price, IDS_PRICE_FAILED, &set_price);
}

} // namespace dialogs
