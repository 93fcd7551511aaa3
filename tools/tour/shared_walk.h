#pragma once

#include "copied_files.h"

#include "vfs/client.h"

#include <vector>

namespace tour {

/// Shares `folder` of `owner`, which holds `copied`, with the user of `reader`: walks it as that
/// user, for viewing only and then with all rights, and ends the sharing.
void share(vfs::client& owner, const directory_ptr& folder, vfs::client& reader,
           const std::vector<copied_file>& copied);

} // namespace tour
