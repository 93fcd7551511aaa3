#pragma once

#include "vfs/directory.h"

#include <filesystem>
#include <string>

namespace transfer {

/// Whether `folder` is one whose path leads a synchroniser back to it: its path in another user's
/// tree, or in the Trash, is that of something else in the user's own.
bool has_path_of_its_own(const vfs::directory& folder, bool guest);

/// Binds `local`, the local copy of the file of that name in the store's folder `folder_path`, for
/// upload, so that what the user changes in it goes back. A binding of the same file that was there
/// goes. Throws what `syncer::binding_manager` throws.
void create_temp_binding(const std::wstring& user_name, const std::wstring& folder_path,
                         const std::filesystem::path& local);

} // namespace transfer
