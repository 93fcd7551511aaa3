/// What becomes of the bindings of one item when a page is applied, while other programs may change
/// them too.
#pragma once

#include "syncer/binding.h"

#include <vector>

namespace dialogs {

/// What a page shows, and what of that its user has touched. The rest stays as the file has it.
struct sync_wish {
    bool permanent = false;
    bool backup = false;
    bool permanent_touched = false;
    bool choice_touched = false;
    bool path_touched = false;

    bool is_touched() const noexcept { return permanent_touched || choice_touched || path_touched; }
};

enum class binding_plan {
    keep,
    remove,
    /// One binding takes the place of all.
    replace,
    /// Somebody else changed what the user wants to change: the user has to see that first.
    conflict,
};

/// Whether a rule keeps anything from coming back or going away: then pages call it a backup.
bool is_backup(const syncer::binding_rule& rule) noexcept;

/// `shown` are the item's bindings as the page has shown them, `now` as the file has them.
binding_plan plan_bindings(const std::vector<syncer::binding>& shown,
                           const std::vector<syncer::binding>& now, const sync_wish& wish);

} // namespace dialogs
