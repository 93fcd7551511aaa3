#include "serializer/node.h"

#include <cwchar>
#include <limits>
#include <utility>

namespace serializer {

namespace {

/// The first child of that name or the end. `find` may answer any of equal name.
template <class Node>
auto find_first(Node& parent, const std::wstring& name) {
    const auto found = parent.lower_bound(name);
    return found != parent.end() && found->first == name ? found : parent.end();
}

} // namespace

node::node(std::wstring node_name, std::wstring node_value)
    : name(std::move(node_name)), value(std::move(node_value)) {}

node::node(std::istream& in) {
    deserialize(in);
}

bool node::operator==(const node& other) const {
    const std::multimap<std::wstring, node>& children = *this;
    return name == other.name && value == other.value && children == other;
}

node::iterator node::add_child(const std::wstring& child_name, const std::wstring& child_value) {
    return emplace(child_name, node(child_name, child_value));
}

void node::set_child_value(const std::wstring& child_name, const std::wstring& child_value) {
    const auto found = find_first(*this, child_name);
    if (found != end()) {
        found->second.value = child_value;
    } else {
        add_child(child_name, child_value);
    }
}

void node::set_child_int(const std::wstring& child_name, std::int32_t child_value) {
    set_child_value(child_name, std::to_wstring(child_value));
}

const std::wstring& node::get_child_value(const std::wstring& child_name,
                                          const std::wstring& default_value) const {
    const auto found = find_first(*this, child_name);
    return found != end() ? found->second.value : default_value;
}

std::int32_t node::get_child_int(const std::wstring& child_name, std::int32_t default_value) const {
    const auto found = find_first(*this, child_name);
    if (found == end()) {
        return default_value;
    }
    // A number too large for the wider type comes out as its bound, out of range here too.
    const std::wstring& text = found->second.value;
    wchar_t* behind = nullptr;
    const long long number = std::wcstoll(text.c_str(), &behind, 10);
    const bool is_number = !text.empty() && behind == text.c_str() + text.size() &&
                           number >= std::numeric_limits<std::int32_t>::min() &&
                           number <= std::numeric_limits<std::int32_t>::max();
    return is_number ? static_cast<std::int32_t>(number) : default_value;
}

} // namespace serializer
