#pragma once

#include <windows.h>

#include <string>

namespace utils {

/// The module that this code is linked into: the extension, or a program. Not referenced: whoever
/// runs this code holds it.
HMODULE own_module() noexcept;

/// Its full path. Throws `system_error_exception`.
std::wstring own_module_path();

} // namespace utils
