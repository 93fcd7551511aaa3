#pragma once

#include "serializer/arena.h"

#include <cstdint>
#include <functional>
#include <istream>
#include <map>
#include <ostream>
#include <string>
#include <string_view>
#include <utility>

namespace serializer {

using wide_text = std::basic_string<wchar_t, std::char_traits<wchar_t>, arena_allocator<wchar_t>>;

/// A named text value with children, the tree of all settings files. The children are ordered by
/// name, those of equal name as they were inserted; each stands under its own name. Copies are
/// deep. Integers are held as their decimal text.
///
/// The text of a node is `<name>value` children `</name>` and nothing for the eye: white space is
/// part of a value. A value stands before the first child only.
///
/// A tree takes its memory from the arena that its root was made with, which has to outlive it and
/// what is moved out of it, or from the heap. A copy is on the heap.
class node : public std::multimap<wide_text, node, std::less<>,
                                  arena_allocator<std::pair<const wide_text, node>>> {
public:
    /// The levels of elements that a text may have, the root counted. Trees are walked by
    /// recursion, on threads of other programs, so that their stacks set a bound.
    static constexpr int max_depth = 256;

    wide_text name;
    wide_text value;

    node() = default;
    explicit node(const allocator_type& memory);
    node(std::wstring_view node_name, std::wstring_view node_value,
         const allocator_type& memory = {});
    /// An empty node that is then read with `deserialize`.
    explicit node(std::istream& in);
    node(const node&) = default;
    node(node&&) = default;
    node(const node& other, const allocator_type& memory);
    node(node&& other, const allocator_type& memory);
    node& operator=(const node&) = default;
    node& operator=(node&&) = default;
    virtual ~node() = default;

    /// Writes the text, or nothing where it raises: `utf8::invalid_utf16` for half a surrogate
    /// pair, `wrong_format_exception` for what could not be read again, which is a tree that is too
    /// deep or a child whose name begins with a slash.
    void serialize(std::ostream& out) const;

    /// Replaces name, value and children by those of the text. Throws `wrong_format_exception`, or
    /// the failures of `utf8::exception` for bytes that are no UTF-8; what was read until then
    /// stays. The stream is left behind the element, or at its end if it cannot seek.
    void deserialize(std::istream& in);
    /// The same from bytes in memory; those behind the element are ignored.
    void deserialize(std::string_view text);

    /// Compares name, value and children, recursively and in their order.
    bool operator==(const node& other) const;

    /// Inserts a child, behind those of the same name if there are any.
    iterator add_child(std::wstring_view child_name, std::wstring_view child_value);

    /// Changes the value of the first child of that name and leaves its children; adds a child if
    /// there is none.
    void set_child_value(std::wstring_view child_name, std::wstring_view child_value);
    void set_child_int(std::wstring_view child_name, std::int32_t child_value);

    /// The value of the first child of that name, else the default. The result refers to one or the
    /// other and lives as long as that does.
    std::wstring_view get_child_value(std::wstring_view child_name,
                                      std::wstring_view default_value) const;
    /// Blanks around the number do not count. Throws `wrong_format_exception` for a value that is
    /// no number of 32 bits: another one in its place could be written back over it.
    std::int32_t get_child_int(std::wstring_view child_name, std::int32_t default_value) const;
};

} // namespace serializer
