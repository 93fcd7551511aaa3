#pragma once

#include "shell_items/selection.h"

#include <windows.h>

#include <atomic>
#include <cstdint>
#include <exception>
#include <optional>
#include <string>
#include <vector>

namespace dialogs {

/// What the user has changed of the selected items, and what became of that: one thread fills it
/// in, another carries it out. It holds all that this needs.
struct item_changes {
    shell::selection items;
    std::optional<std::wstring> name; ///< of the only item
    std::optional<std::int32_t> access;
    std::optional<std::wstring> description;
    std::optional<double> price; ///< of files

    /// Set when the user does not wait any more.
    std::atomic<bool> stop = false;

    /// A step that failed; `reason` is null for an item that has no such value.
    struct failure {
        UINT caption; ///< a text's number
        std::exception_ptr reason;
    };

    std::vector<failure> failures{};
};

/// Stores the changes one after another, each in all items; the shell hears of them. A record gets
/// its item's new name. A step that
/// fails ends with that item, and the next one begins. Throws what is neither a `vfs::exception`
/// nor a missing value.
void store(item_changes& changes);

} // namespace dialogs
