/// What stands in the registry, to be compared before and after.
#pragma once

#include <set>
#include <string>

namespace support {

/// A line for each key, `HKLM\Software\...`, and one for each value, `key @="text"` or
/// `key "name"=dword:00000001`, with single backslashes.
using registry_lines = std::set<std::string>;

/// Everything below Software of the machine's and the user's hives.
registry_lines read_registry();

/// The lines of `left` that `right` has not.
registry_lines without(const registry_lines& left, const registry_lines& right);

} // namespace support
