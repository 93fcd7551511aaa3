#pragma once

#include "shell_items/item_record.h"

#include <shobjidl.h>

namespace shell {

/// What the shell may do with an item, as SFGAO flags. The file manager is shown items of a
/// namespace, all other hosts are shown files.
SFGAOF get_attributes(const PIDLDATA& record, bool in_file_manager) noexcept;
/// The same for the first record of `list`. Nothing can be done with an item that is not ours; a
/// list without items forbids nothing.
SFGAOF get_attributes(const ITEMIDLIST* list, bool in_file_manager) noexcept;

} // namespace shell
