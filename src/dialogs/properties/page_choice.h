/// Which pages the properties of items have beside the general one. Nothing is asked of the store:
/// where the folder does not know an item, its record tells what it was when it was listed.
#pragma once

#include "shell_items/selection.h"

namespace dialogs {

/// A single folder of the user's own tree, which is neither a root nor in the Trash.
bool has_share_page(const shell::selection& items);
/// Nothing in the Trash and no root.
bool has_sync_page(const shell::selection& items);

} // namespace dialogs
