#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace vfs_quilldeck {

/// One element of a parsed reply. Its children stand in document order. A node is a light value:
/// all nodes of one reply share the parsed text, which lives as long as one of them.
///
/// The format is what the service sends and no more: elements, `\<` and `\>` for angle brackets in
/// names and text, no attributes, entities, comments, prologs or self-closing tags.
class reply_node {
public:
    /// Parses a reply; the first tag found is the root. Throws `exception` with the name
    /// "Parse error" where a bracket is missing.
    static reply_node parse(std::wstring text);

    /// The tag's text between its brackets.
    std::wstring_view name() const;
    /// Empty on an element with children.
    std::wstring_view text() const;
    /// No child element was seen.
    bool is_leaf() const;
    std::vector<reply_node> children() const;

    /// The text of the first child of that name, leaf or not; empty if there is none.
    std::wstring get_child_text(std::wstring_view name) const;
    /// All children of that name that have children of their own.
    std::vector<reply_node> get_children(std::wstring_view name) const;

private:
    /// An element in document order; its first child is the record behind it.
    struct record {
        std::uint32_t name_at;
        std::uint32_t name_size;
        std::uint32_t text_at;
        std::uint32_t text_size;
        std::uint32_t end; ///< the record behind its last descendant
    };

    struct document {
        std::wstring text;
        std::vector<record> records;
    };
    class parser;

    reply_node(std::shared_ptr<const document> owner, std::size_t index)
        : owner_(std::move(owner)), index_(index) {}

    const record& self() const { return owner_->records[index_]; }

    std::wstring_view name_of(const record& element) const;
    std::wstring_view text_of(const record& element) const;

    std::shared_ptr<const document> owner_;
    std::size_t index_;
};

} // namespace vfs_quilldeck
