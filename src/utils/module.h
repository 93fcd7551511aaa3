#pragma once

#include <windows.h>

#include <string>

namespace utils {

/// The module that this code is linked into: the extension, or a program. Not referenced: whoever
/// runs this code holds it.
HMODULE own_module() noexcept;

/// Its full path. Throws `system_error_exception`.
std::wstring own_module_path();

/// Whether the destructors of static objects of a DLL run because the process ends, and not because
/// the DLL is unloaded. All other threads were ended by force then, and may have been ended while
/// they held a lock: a destructor that would take one, talk to somebody or call another DLL has to
/// leave everything as it is. False while a program's own static objects are destroyed.
bool process_is_ending() noexcept;

} // namespace utils
