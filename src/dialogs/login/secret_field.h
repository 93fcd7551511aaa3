/// The fields of a dialog in which passwords are typed.
#pragma once

#include <windows.h>

#include <string>

namespace dialogs {

/// The field's text in the place of `secret`, which is wiped.
void read_secret(HWND field, std::wstring& secret);

/// Empties the field and overwrites what it held.
void clear_secret(HWND field);

} // namespace dialogs
