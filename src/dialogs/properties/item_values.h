/// What the general page of the properties dialog shows of items, one or many. Everything here may
/// ask the store, and is called on threads that can wait for it.
#pragma once

#include "shell_items/selection.h"
#include "utils/slim_lock.h"
#include "vfs/item.h"

#include <atomic>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace dialogs {

/// Set when nobody waits for a result any more.
using stop_flag = std::atomic<bool>;
using item_list = std::vector<vfs::item_ptr>;

/// The selected items. The loaders of a page share it, so that the store is asked for the list of
/// their folder once at most, and not at all where the folder knows them. Safe on any thread.
class selected_items {
public:
    explicit selected_items(const shell::selection& selection);

    /// In the order of the selection; shorter when `stop` was set. Waits while another thread looks
    /// them up. Throws a failure of that; whoever comes next tries anew.
    item_list find(const stop_flag& stop);

private:
    const std::shared_ptr<vfs::directory> folder_;
    std::vector<std::wstring> ids_;
    /// Held by who looks, also during a request: the others need its answer.
    utils::slim_lock lock_;
    item_list found_;
};

/// The access value of all items; nothing when two differ.
std::optional<std::int32_t> common_access(const item_list& items, const stop_flag& stop);
/// The description of all items; nothing when two differ.
std::optional<std::wstring> common_description(const item_list& items, const stop_flag& stop);
/// The price of all items, 0 for one that is no file; nothing when two differ.
std::optional<double> common_price(const item_list& items, const stop_flag& stop);

/// How much there is in items.
struct item_totals {
    std::int64_t size = 0; ///< bytes
    std::uint64_t folders = 0;
    std::uint64_t files = 0;
};

/// Adds what lies in the directories among `items` to `totals`, one listing a directory, and calls
/// `show` after each. Ends between two items when `stop` is set.
void add_contents(const item_list& items, item_totals totals,
                  const std::function<void(const item_totals&)>& show, const stop_flag& stop);

} // namespace dialogs
