/// Texts of the registry. Any program writes there, so a value may be of another type, lack its
/// end, or be of any length.
#pragma once

#include <windows.h>

#include <string>
#include <vector>

namespace commands {

/// The text of `value` (null for the default value) below `key`\`subkey`. Empty when it is missing,
/// no text, or longer than a path can be; never with a terminator inside.
std::wstring read_text(HKEY key, const std::wstring& subkey, const wchar_t* value);

/// The names of the values of an open key but the default value's, in the registry's order.
std::vector<std::wstring> value_names(HKEY key);

/// The names of the keys below an open key, in the registry's order.
std::vector<std::wstring> subkey_names(HKEY key);

} // namespace commands
