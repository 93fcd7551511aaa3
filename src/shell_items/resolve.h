#pragma once

#include "shell_items/item_record.h"

#include <span>

namespace shell {

/// Goes down from `item` by the ids of `way` and answers the last item found. Names take no part:
/// a list that was stored before a rename leads to the same item. May list directories. Throws
/// E_FAIL where the way goes on below what is no directory, and the `vfs::exception` of a lookup.
vfs::item_ptr resolve(vfs::item_ptr item, std::span<const PIDLDATA> way);

} // namespace shell
