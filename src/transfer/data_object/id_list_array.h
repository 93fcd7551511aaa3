#pragma once

#include "com/media.h"
#include "shell_items/item_id_list.h"

#include <span>

namespace transfer {

/// The block of the format "Shell IDList Array": the absolute list of a folder, then those of items
/// in it, behind a table of where each begins. Throws STG_E_MEDIUMFULL when there is no room.
com::unique_global make_id_list_array(const shell::CItemIDList& folder,
                                      std::span<const shell::PIDLDATA> items, UINT block_flags);

} // namespace transfer
