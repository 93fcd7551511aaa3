#pragma once

#include "copied_files.h"

#include "vfs/client.h"

namespace tour {

/// Uploads `sample` into a new folder in `place`, renames, describes, moves, reads it back, and
/// deletes the folder for good.
void work_in(const directory_ptr& place, const copied_file& sample);

/// Takes one of the files in `target` to the Trash of its owner and back, and deletes it for good.
void take_through_trash(vfs::client& owner, const directory_ptr& target, const copied_file& copied);

} // namespace tour
