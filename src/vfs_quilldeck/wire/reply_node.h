#pragma once

#include "vfs_quilldeck/wire/reply_buffer.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace vfs_quilldeck {

/// One element of a parsed reply. Its children stand in document order. A node is a light value:
/// all nodes of one reply share its bytes, which live as long as one of them. Nothing is decoded
/// before it is asked for: a listing has many megabytes.
///
/// The format is what the service sends and no more: elements, `\<` and `\>` for angle brackets in
/// names and text, no attributes, entities, comments, prologs or self-closing tags.
class reply_node {
public:
    /// Parses a reply as `utf8_to_wide` would decode it; the first tag found is the root. Throws
    /// `exception` with the name "Parse error" where a bracket is missing.
    static reply_node parse(shared_reply bytes);
    /// The same of a text.
    static reply_node parse(std::wstring_view text);

    /// The tag's text between its brackets.
    std::wstring name() const;
    /// Empty on an element with children.
    std::wstring text() const;
    /// No child element was seen.
    bool is_leaf() const;
    std::vector<reply_node> children() const;

    /// The text of the first child of that name, leaf or not; empty if there is none.
    std::wstring get_child_text(std::wstring_view name) const;
    /// All children of that name that have children of their own.
    std::vector<reply_node> get_children(std::wstring_view name) const;

private:
    /// An element in document order; its first child is the record behind it, its text begins
    /// behind the bracket that ends the name.
    struct record {
        std::uint32_t name_at;
        std::uint32_t name_size;
        std::uint32_t text_size;
        std::uint32_t end; ///< the record behind its last descendant
    };

    struct document {
        shared_reply bytes;
        std::vector<record> records;
        /// All names stand as they are: ASCII, and nothing escaped.
        bool plain_names = true;
    };
    class parser;

    reply_node(std::shared_ptr<const document> owner, std::size_t index)
        : owner_(std::move(owner)), index_(index) {}

    const record& self() const { return owner_->records[index_]; }

    std::string_view raw_name_of(const record& element) const;
    std::string_view raw_text_of(const record& element) const;
    bool has_name(const record& element, std::wstring_view name) const;

    std::shared_ptr<const document> owner_;
    std::size_t index_;
};

} // namespace vfs_quilldeck
