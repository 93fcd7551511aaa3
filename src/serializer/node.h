#pragma once

#include <cstdint>
#include <istream>
#include <map>
#include <ostream>
#include <string>

namespace serializer {

/// A named text value with children, the tree of all settings files. The children are ordered by
/// name, those of equal name as they were inserted; each stands under its own name. Copies are
/// deep. Integers are held as their decimal text.
///
/// The text of a node is `<name>value` children `</name>` and nothing for the eye: white space is
/// part of a value. A value stands before the first child only.
class node : public std::multimap<std::wstring, node> {
public:
    /// The levels of elements that a text may have, the root counted. Trees are walked by
    /// recursion, on threads of other programs, so that their stacks set a bound.
    static constexpr int max_depth = 256;

    std::wstring name;
    std::wstring value;

    node() = default;
    node(std::wstring node_name, std::wstring node_value);
    /// An empty node that is then read with `deserialize`.
    explicit node(std::istream& in);
    node(const node&) = default;
    node(node&&) = default;
    node& operator=(const node&) = default;
    node& operator=(node&&) = default;
    virtual ~node() = default;

    /// Writes the text, or nothing where it raises: `utf8::invalid_utf16` for half a surrogate
    /// pair, `wrong_format_exception` for what could not be read again, which is a tree that is too
    /// deep or a child whose name begins with a slash.
    void serialize(std::ostream& out) const;

    /// Replaces name, value and children by those of the text and stops behind it. Throws
    /// `wrong_format_exception`, or the failures of `utf8::exception` for bytes that are no UTF-8;
    /// what was read until then stays.
    void deserialize(std::istream& in);

    /// Compares name, value and children, recursively and in their order.
    bool operator==(const node& other) const;

    /// Inserts a child, behind those of the same name if there are any.
    iterator add_child(const std::wstring& child_name, const std::wstring& child_value);

    /// Changes the value of the first child of that name and leaves its children; adds a child if
    /// there is none.
    void set_child_value(const std::wstring& child_name, const std::wstring& child_value);
    void set_child_int(const std::wstring& child_name, std::int32_t child_value);

    /// The value of the first child of that name, else the default: a reference to one or the
    /// other, which lives as long as that does.
    const std::wstring& get_child_value(const std::wstring& child_name,
                                        const std::wstring& default_value) const;
    /// The default also stands in for a value that is not wholly a number of 32 bits.
    std::int32_t get_child_int(const std::wstring& child_name, std::int32_t default_value) const;
};

} // namespace serializer
