#pragma once

#include <exception>
#include <string>
#include <string_view>

namespace utils {

/// The text in the system's ANSI page, for messages of the standard exceptions: a narrow message
/// box shows them. A character that the page does not have becomes its default one.
std::string narrow(std::wstring_view text);

/// The text of the ANSI page that `narrow` or the system has made.
std::wstring widen(std::string_view text);

/// What a failure says, in the system's ANSI page. Those of the library's file system tell their
/// paths in UTF-8, and within them the system's words in the ANSI page.
std::string narrow_message(const std::exception& failure);

} // namespace utils
