#pragma once

#include <string>
#include <string_view>

namespace serializer {

/// Appends a name or value as it stands in the settings text: UTF-8 in which a backslash precedes
/// every `\`, `<` and `>`. Throws `utf8::invalid_utf16` for half a surrogate pair.
void append_token(std::string& out, std::wstring_view text);

} // namespace serializer
