#pragma once

#include <string>

namespace tour {

/// Prints a line in UTF-8, at once. Half a surrogate pair, which a name may hold, prints as U+FFFD.
void print(const std::wstring& line);

} // namespace tour
