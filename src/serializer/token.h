#pragma once

#include <cstddef>
#include <string_view>

namespace serializer {

/// The most bytes that a character of a name or value becomes.
inline constexpr std::size_t longest_character = 3;

/// Writes a name or value as it stands in a settings text: UTF-8 with a backslash before each `\`,
/// `<` and `>`. Returns the end of what was written, at most `longest_character` for each unit.
/// Throws `utf8::invalid_utf16` for half a surrogate pair.
char* put_token(char* to, std::wstring_view text);

} // namespace serializer
