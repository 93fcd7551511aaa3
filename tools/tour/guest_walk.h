#pragma once

#include "copied_files.h"

#include "vfs/client.h"

namespace tour {

/// Walks all that a guest's access id opens, and is refused what it does not.
void look_as_guest(vfs::client& guest);

/// Works in the one folder of a guest whose access id allows that.
void work_as_guest(vfs::client& guest, const copied_file& sample);

} // namespace tour
