#include "dialogs/properties/item_values.h"

#include "vfs/vfs.h"

#include <algorithm>
#include <mutex>
#include <ranges>

namespace dialogs {

namespace {

/// The value that `get` answers of each item; nothing when two neighbours differ, or when it does
/// not matter any more.
template <class Get>
auto common_value(const item_list& items, const stop_flag& stop, const Get& get)
    -> std::optional<decltype(get(*items.front()))> {
    if (items.empty()) {
        return std::nullopt;
    }
    auto first = get(*items.front());
    for (const vfs::item_ptr& item : items | std::views::drop(1)) {
        if (stop || get(*item) != first) {
            return std::nullopt;
        }
    }
    return first;
}

} // namespace

selected_items::selected_items(const shell::selection& selection) : folder_(selection.folder) {
    ids_.reserve(selection.records.size());
    for (const shell::PIDLDATA& record : selection.records) {
        ids_.push_back(record.get_id());
    }
}

item_list selected_items::find(const stop_flag& stop) {
    const std::lock_guard guard(lock_);
    if (found_.size() < ids_.size()) {
        item_list found;
        found.reserve(ids_.size());
        for (const std::wstring& id : ids_) {
            if (stop) {
                return found;
            }
            found.push_back(folder_->find_item_by_id(id, false));
        }
        found_ = std::move(found);
    }
    return found_;
}

std::optional<std::int32_t> common_access(const item_list& items, const stop_flag& stop) {
    return common_value(items, stop, [](const vfs::item& item) { return item.get_access(); });
}

std::optional<std::wstring> common_description(const item_list& items, const stop_flag& stop) {
    return common_value(items, stop, [](const vfs::item& item) { return item.get_description(); });
}

std::optional<double> common_price(const item_list& items, const stop_flag& stop) {
    return common_value(items, stop, [](const vfs::item& item) {
        const auto* const file = dynamic_cast<const vfs::file*>(&item);
        return file ? file->get_price() : 0.0;
    });
}

void add_contents(const item_list& items, item_totals totals,
                  const std::function<void(const item_totals&)>& show, const stop_flag& stop) {
    // Those that are still to be listed, the next one last: a tree may be deeper than the stack.
    item_list waiting(items.rbegin(), items.rend());
    while (!waiting.empty()) {
        const auto directory = std::dynamic_pointer_cast<vfs::directory>(waiting.back());
        waiting.pop_back();
        if (stop) {
            return;
        }
        if (!directory) {
            continue;
        }
        const item_list children = directory->get_items();
        const auto first_below = static_cast<std::ptrdiff_t>(waiting.size());
        for (const vfs::item_ptr& child : children) {
            if (stop) {
                return;
            }
            if (child->get_type() == vfs::type_file) {
                const auto file = std::dynamic_pointer_cast<vfs::file>(child);
                totals.size += file ? file->get_size() : 0;
                ++totals.files;
            } else {
                ++totals.folders;
                waiting.push_back(child);
            }
        }
        std::reverse(waiting.begin() + first_below, waiting.end());
        show(totals);
    }
}

} // namespace dialogs
