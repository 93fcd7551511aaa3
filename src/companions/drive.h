#pragma once

#include <windows.h>

namespace companions {

/// Whether the drive is registered with the shell.
bool drive_is_registered();

/// Opens the drive in the file manager. Throws `system_error_exception`.
void open_drive(HWND owner);

} // namespace companions
