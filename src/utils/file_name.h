/// Names that come from outside, from the store above all, on their way into a local path.
#pragma once

#include <string_view>

namespace utils {

/// How the platform makes a file or folder that is to have this name: without the dots and blanks
/// at its end, of ".." nothing. It does not so where the name stands within a path, and would not
/// find what it made.
std::wstring_view made_name(std::wstring_view name) noexcept;

/// Whether `name` can be a part of a local path: it leads to no other folder, device or stream, and
/// stands for no other names.
bool is_file_name(std::wstring_view name) noexcept;

} // namespace utils
