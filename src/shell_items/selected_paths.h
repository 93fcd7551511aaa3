#pragma once

#include <objidl.h>

#include <string>
#include <vector>

namespace shell {

/// The local paths that a data object of anybody holds in the format `CF_HDROP`, of any length.
/// Throws a status: E_INVALIDARG for a list that is broken or has no path, and what the data object
/// answers.
std::vector<std::wstring> selected_paths(IDataObject& data);

} // namespace shell
