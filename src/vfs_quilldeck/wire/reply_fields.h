/// How the fields of a reply are read: text that is no number gives 0, a date of 0 is not known.
#pragma once

#include "vfs/records.h"
#include "vfs_quilldeck/wire/reply_node.h"

#include <cstdint>
#include <string>
#include <string_view>

namespace vfs_quilldeck {

/// True exactly when the text is "True".
bool get_bool(const reply_node& node, std::wstring_view name);
std::int32_t get_int(const reply_node& node, std::wstring_view name);
std::int64_t get_int64(const reply_node& node, std::wstring_view name);
double get_double(const reply_node& node, std::wstring_view name);
vfs::time_seconds get_time(const reply_node& node, std::wstring_view name);

} // namespace vfs_quilldeck
