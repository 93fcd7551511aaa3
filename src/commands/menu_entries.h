/// Entries of menus, from tables.
#pragma once

#include <windows.h>

namespace commands {

/// Inserts string `text` of the string table at `position` with the command `id` and the state
/// `state`, a mask of MFS values. Throws E_FAIL when the menu refuses.
void insert_entry(HMENU menu, UINT position, UINT id, UINT text, UINT state = MFS_ENABLED);

/// Inserts a line. Throws E_FAIL when the menu refuses.
void insert_separator(HMENU menu, UINT position);

} // namespace commands
