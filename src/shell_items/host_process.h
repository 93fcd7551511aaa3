#pragma once

#include <windows.h>

namespace shell {

/// What `get_process_kind` tells apart.
enum process_kind : int {
    process_other = 0, ///< also a process that could not be opened
    process_file_manager = 1,
    process_word = 2,
    process_session = 3,
};

/// Which program a process runs, by the name of its executable. Asked afresh each time.
process_kind get_process_kind(DWORD process_id) noexcept;

/// Whether this process is the file manager; found once. All others are shown a drive of local
/// files.
bool is_file_manager() noexcept;

} // namespace shell
