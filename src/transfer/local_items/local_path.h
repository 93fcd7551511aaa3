#pragma once

#include <string>
#include <string_view>

namespace transfer {

/// The path with single backslashes between its elements and none at the end, but for the root of a
/// drive.
std::wstring normalised(std::wstring_view path);

/// The last element; empty for a drive.
std::wstring last_element(std::wstring_view path);

/// Why the item at a normalised path cannot be read by just this path: a text for the user; null
/// when it can. The platform quietly takes some paths for others, in which an item of another name
/// may lie, and most programs end at `MAX_PATH`.
const wchar_t* fault_of_local_path(const std::wstring& path, bool directory);

} // namespace transfer
