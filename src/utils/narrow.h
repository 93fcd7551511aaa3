#pragma once

#include <string>
#include <string_view>

namespace utils {

/// The text in the system's ANSI page, for messages of the standard exceptions: a narrow message
/// box shows them. A character that the page does not have becomes its default one.
std::string narrow(std::wstring_view text);

} // namespace utils
