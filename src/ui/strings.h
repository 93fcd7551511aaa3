/// The texts of the module's string table, by number.
#pragma once

#include <windows.h>

#include <initializer_list>
#include <string>

namespace ui {

/// Text `id` as it stands. Throws `utils::system_error_exception` when there is none.
std::wstring load_string(UINT id);

/// Text `id` with its conversions ("%s", "%d") replaced by `values`, one after another. A value is
/// never read as a format itself; values that the text has no room for are dropped. Throws a
/// standard exception when there are too few.
std::wstring load_string(UINT id, std::initializer_list<std::wstring> values);

} // namespace ui
