#include "vfs_quilldeck/wire/reply_fields.h"

#include <cstdlib>
#include <cwchar>

namespace vfs_quilldeck {

bool get_bool(const reply_node& node, std::wstring_view name) {
    return node.get_child_text(name) == L"True";
}

std::int32_t get_int(const reply_node& node, std::wstring_view name) {
    return _wtoi(node.get_child_text(name).c_str());
}

std::int64_t get_int64(const reply_node& node, std::wstring_view name) {
    return _wtoi64(node.get_child_text(name).c_str());
}

double get_double(const reply_node& node, std::wstring_view name) {
    return std::wcstod(node.get_child_text(name).c_str(), nullptr);
}

vfs::time_seconds get_time(const reply_node& node, std::wstring_view name) {
    const std::int64_t stored = get_int64(node, name);
    return stored == 0 ? vfs::time_unknown : stored;
}

} // namespace vfs_quilldeck
