/// The text format of settings trees: what a node is written as and read from.
#include "serializer/exceptions.h"
#include "serializer/node.h"
#include "serializer/token.h"

#include <source_location>
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
        text_ += '<';
        const std::size_t name_at = text_.size();
        append_token(text_, element.name);
        const std::size_t name_size = text_.size() - name_at;
        text_ += '>';
        append_token(text_, element.value);
        for (const auto& [key, child] : element) {
            // Behind the opening bracket the slash would be read as this element's end.
            if (child.name.starts_with(L'/')) {
                throw wrong_format_exception(where_, "Incorrect object name syntax");
            }
            write(child, depth + 1);
        }
        text_ += "</";
        text_.append(text_, name_at, name_size);
        text_ += '>';
    }

    const std::string& text() const { return text_; }

private:
    const char* where_;
    std::string text_;
};

/// Takes the bytes from the stream's buffer, as the stream itself would be asked for each twice.
class reader {
public:
    reader(std::streambuf& in, const char* where) : in_(in), where_(where) {}

    /// The opening bracket is optional, as a parent has consumed that of each child.
    void read(node& element, int depth) {
        if (depth == node::max_depth) {
            fail("Object tree is too deep");
        }
        if (next_is('<')) {
            in_.sbumpc();
        }
        read_text(element.name);
        expect('>', "Incorrect object name syntax");
        read_text(element.value);
        expect('<', "Incorrect object value syntax");
        element.clear();
        while (!next_is('/')) {
            node child;
            read(child, depth + 1);
            // A file is in the order of the tree, so that each child goes to the end.
            std::wstring key = child.name;
            element.emplace_hint(element.end(), std::move(key), std::move(child));
            expect('<', "Incorrect object subitem syntax");
        }
        in_.sbumpc();
        read_text(close_name_);
        if (close_name_ != element.name) {
            fail("Incorrect object close tag name");
        }
        expect('>', "Incorrect object close tag syntax");
    }

    [[noreturn]] void fail(const char* what) const { throw wrong_format_exception(where_, what); }

private:
    bool next_is(char c) { return in_.sgetc() == c; }

    void expect(char c, const char* failure) {
        if (in_.sbumpc() != c) {
            fail(failure);
        }
    }

    void read_text(std::wstring& text) {
        read_token(in_, raw_);
        decode_token(raw_, text);
    }

    std::streambuf& in_;
    const char* where_;
    // Kept for all elements, so that their memory is.
    std::string raw_;
    std::wstring close_name_;
};

} // namespace

void node::serialize(std::ostream& out) const {
    writer whole(std::source_location::current().function_name());
    whole.write(*this, 0);
    out.write(whole.text().data(), static_cast<std::streamsize>(whole.text().size()));
}

void node::deserialize(std::istream& in) {
    const char* where = std::source_location::current().function_name();
    const std::istream::sentry ready(in, true);
    if (!ready) {
        throw wrong_format_exception(where, "Incorrect object name syntax");
    }
    reader(*in.rdbuf(), where).read(*this, 0);
}

} // namespace serializer
