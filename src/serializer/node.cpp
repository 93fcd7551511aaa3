#include "serializer/node.h"

#include "serializer/exceptions.h"

#include <algorithm>
#include <cwchar>
#include <cwctype>
#include <limits>
#include <source_location>
#include <tuple>
#include <utility>

namespace serializer {

namespace {

/// The first child of that name or the end. `find` may answer any of equal name.
template <class Node>
auto find_first(Node& parent, std::wstring_view name) {
    const auto found = parent.lower_bound(name);
    return found != parent.end() && found->first == name ? found : parent.end();
}

} // namespace

node::node(const allocator_type& memory) : multimap(memory), name(memory), value(memory) {}

node::node(std::wstring_view node_name, std::wstring_view node_value, const allocator_type& memory)
    : multimap(memory), name(node_name, memory), value(node_value, memory) {}

node::node(std::istream& in) {
    deserialize(in);
}

node::node(const node& other, const allocator_type& memory)
    : multimap(other, memory), name(other.name, memory), value(other.value, memory) {}

node::node(node&& other, const allocator_type& memory)
    : multimap(static_cast<multimap&&>(other), memory), name(std::move(other.name), memory),
      value(std::move(other.value), memory) {}

bool node::operator==(const node& other) const {
    const multimap& children = *this;
    return name == other.name && value == other.value && children == other;
}

node::iterator node::add_child(std::wstring_view child_name, std::wstring_view child_value) {
    return emplace(std::piecewise_construct, std::forward_as_tuple(child_name),
                   std::forward_as_tuple(child_name, child_value));
}

void node::set_child_value(std::wstring_view child_name, std::wstring_view child_value) {
    const auto found = find_first(*this, child_name);
    if (found != end()) {
        found->second.value = child_value;
    } else {
        add_child(child_name, child_value);
    }
}

void node::set_child_int(std::wstring_view child_name, std::int32_t child_value) {
    set_child_value(child_name, std::to_wstring(child_value));
}

std::wstring_view node::get_child_value(std::wstring_view child_name,
                                        std::wstring_view default_value) const {
    const auto found = find_first(*this, child_name);
    return found != end() ? std::wstring_view(found->second.value) : default_value;
}

std::int32_t node::get_child_int(std::wstring_view child_name, std::int32_t default_value) const {
    const auto found = find_first(*this, child_name);
    if (found == end()) {
        return default_value;
    }
    // A number too large for the wider type comes out as its bound, out of range here too.
    const wide_text& number_text = found->second.value;
    const wchar_t* const begin = number_text.c_str();
    const wchar_t* const end = begin + number_text.size();
    wchar_t* behind = nullptr;
    const long long number = std::wcstoll(begin, &behind, 10);
    if (behind == begin || !std::all_of<const wchar_t*>(behind, end, std::iswspace) ||
        number < std::numeric_limits<std::int32_t>::min() ||
        number > std::numeric_limits<std::int32_t>::max()) {
        throw wrong_format_exception(std::source_location::current().function_name(),
                                     "Incorrect number syntax");
    }
    return static_cast<std::int32_t>(number);
}

} // namespace serializer
