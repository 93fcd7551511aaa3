/// Where hosts other than the file manager are told that the files of the drive lie. Nothing here
/// makes a folder, and nothing that the store tells leads out of the folders named here.
#pragma once

#include "shell_items/item_id_list.h"

#include <string>

namespace shell {

/// The folder of the files that `user_name` saves. Ends without a separator. Throws a standard
/// exception, for a name that no folder can have too.
std::wstring files_saved_folder(const std::wstring& user_name);

/// The folder under which the files are named that a save dialog is about to make.
std::wstring filter_folder();

/// The names of the records as one local path below some folder, without separators at its ends.
/// Throws what `local_name` throws.
std::wstring local_path(const CItemIDList& list);

} // namespace shell
