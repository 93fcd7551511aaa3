/// The text format of settings trees: what a node is written as and read from.
#include "serializer/exceptions.h"
#include "serializer/node.h"
#include "serializer/scanner.h"
#include "serializer/token.h"

#include <algorithm>
#include <source_location>
#include <string>
#include <tuple>
#include <utility>

namespace serializer {

namespace {

class writer {
public:
    explicit writer(const char* where) : where_(where) {}

    void write(const node& element, int depth) {
        if (depth == node::max_depth) {
            throw wrong_format_exception(where_, "Object tree is too deep");
        }
        make_room(element);
        *to_++ = '<';
        const std::size_t name_at = size();
        to_ = put_token(to_, element.name);
        const std::size_t name_size = size() - name_at;
        *to_++ = '>';
        to_ = put_token(to_, element.value);
        for (const auto& [key, child] : element) {
            // Behind the opening bracket the slash would be read as this element's end.
            if (child.name.starts_with(L'/')) {
                throw wrong_format_exception(where_, "Incorrect object name syntax");
            }
            write(child, depth + 1);
        }
        make_room(element);
        *to_++ = '<';
        *to_++ = '/';
        to_ = std::copy_n(text_.data() + name_at, name_size, to_);
        *to_++ = '>';
    }

    std::string_view text() const { return {text_.data(), size()}; }

private:
    std::size_t size() const { return static_cast<std::size_t>(to_ - text_.data()); }

    /// For the element's name, its value and the three signs around them.
    void make_room(const node& element) {
        const std::size_t needed =
            longest_character * (element.name.size() + element.value.size()) + 3;
        const std::size_t used = size();
        if (text_.size() - used < needed) {
            text_.resize(2 * text_.size() + needed);
            to_ = text_.data() + used;
        }
    }

    const char* where_;
    /// As large as what may be written; used up to `to_`.
    std::string text_;
    char* to_ = text_.data();
};

/// Reads an element in one pass. Names and values are made in the tree, in their final place.
class reader {
public:
    reader(std::string_view text, const char* where) : text_(text), where_(where) {}

    void read(node& element) {
        const token name = take_name();
        element.name = name.text;
        expect('>', name_failure);
        element.value = text_.take_token().text;
        expect('<', value_failure);
        element.clear();
        read_behind_value(element, name.raw, 1);
    }

    /// The bytes behind the element.
    std::size_t left() const { return text_.left(); }

private:
    static constexpr auto name_failure = "Incorrect object name syntax";
    static constexpr auto value_failure = "Incorrect object value syntax";

    void read_child(node& parent, int depth) {
        const token name = take_name();
        expect('>', name_failure);
        const token value = text_.take_token(name.text);
        expect('<', value_failure);
        // A file is in the order of the tree, so that each child goes to the end.
        const auto child = parent.emplace_hint(parent.end(), std::piecewise_construct,
                                               std::forward_as_tuple(name.text),
                                               std::forward_as_tuple(name.text, value.text));
        try {
            read_behind_value(child->second, name.raw, depth);
        } catch (...) {
            parent.erase(child);
            throw;
        }
    }

    void read_behind_value(node& element, std::string_view raw_name, int depth) {
        while (!text_.take('/')) {
            if (depth == node::max_depth) {
                fail("Object tree is too deep");
            }
            read_child(element, depth + 1);
            expect('<', "Incorrect object subitem syntax");
        }
        // Another spelling of the same name is seldom.
        if (!text_.take(raw_name, '>')) {
            if (text_.take_token().text != element.name) {
                fail("Incorrect object close tag name");
            }
            expect('>', "Incorrect object close tag syntax");
        }
    }

    /// The opening bracket is optional, as a parent has consumed that of each child.
    token take_name() {
        text_.take('<');
        return text_.take_token();
    }

    void expect(char c, const char* failure) {
        if (!text_.take(c)) {
            fail(failure);
        }
    }

    [[noreturn]] void fail(const char* what) const { throw wrong_format_exception(where_, what); }

    scanner text_;
    const char* where_;
};

/// The rest of a stream.
std::string bytes_of(std::istream& in) {
    constexpr std::streamsize least = 4096;
    std::string bytes;
    for (;;) {
        const std::size_t size = bytes.size();
        // One more than there is, so that a second round is only made where there is more.
        const std::streamsize wanted = std::max(in.rdbuf()->in_avail() + 1, least);
        bytes.resize(size + static_cast<std::size_t>(wanted));
        const std::streamsize got = in.rdbuf()->sgetn(bytes.data() + size, wanted);
        bytes.resize(size + static_cast<std::size_t>(got));
        if (got < wanted) {
            return bytes;
        }
    }
}

} // namespace

void node::serialize(std::ostream& out) const {
    writer whole(std::source_location::current().function_name());
    whole.write(*this, 0);
    out.write(whole.text().data(), static_cast<std::streamsize>(whole.text().size()));
}

void node::deserialize(std::istream& in) {
    const std::string bytes = bytes_of(in);
    reader whole(bytes, std::source_location::current().function_name());
    whole.read(*this);
    in.rdbuf()->pubseekoff(-static_cast<std::streamoff>(whole.left()), std::ios::cur, std::ios::in);
}

void node::deserialize(std::string_view text) {
    reader(text, std::source_location::current().function_name()).read(*this);
}

} // namespace serializer
