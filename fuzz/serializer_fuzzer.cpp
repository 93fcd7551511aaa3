/// The reader of settings texts beside a plain one that follows the format's rules word by word,
/// and what it read written and read again.
#include "check.h"
#include "serializer/document.h"
#include "serializer/exceptions.h"
#include "serializer/node.h"

#include <utf8.h>

#include <cstddef>
#include <cstdint>
#include <iterator>
#include <sstream>
#include <string>

namespace {

using serializer::node;

struct broken {};

void replace_all(std::wstring& text, const std::wstring& what, const std::wstring& by) {
    for (std::size_t at = 0; (at = text.find(what, at)) != std::wstring::npos; at += by.size()) {
        text.replace(at, what.size(), by);
    }
}

std::wstring read_token(std::istream& in) {
    std::string raw;
    for (bool escaped = false;;) {
        const int c = in.peek() & 0xFF;
        if (c == 0xFF || (!escaped && (c == '<' || c == '>'))) {
            break;
        }
        raw.push_back(static_cast<char>(in.get()));
        escaped = !escaped && c == '\\';
    }
    std::wstring text;
    utf8::utf8to16(raw.begin(), raw.end(), std::back_inserter(text));
    replace_all(text, L"\\<", L"<");
    replace_all(text, L"\\>", L">");
    replace_all(text, L"\\\\", L"\\");
    return text;
}

void expect(std::istream& in, char c) {
    if (in.get() != c) {
        throw broken();
    }
}

node read(std::istream& in, int depth) {
    if (depth == node::max_depth) {
        throw broken();
    }
    if (in.peek() == '<') {
        in.get();
    }
    node element;
    element.name = read_token(in);
    expect(in, '>');
    element.value = read_token(in);
    expect(in, '<');
    while (in.peek() != '/') {
        const node child = read(in, depth + 1);
        element.emplace(child.name, child);
        expect(in, '<');
    }
    in.get();
    if (std::wstring_view(element.name) != read_token(in)) {
        throw broken();
    }
    expect(in, '>');
    return element;
}

/// A second opening bracket lets a name begin with a slash, which no text that is written can.
bool is_writable(const node& element) {
    for (const auto& [key, child] : element) {
        if (child.name.starts_with(L'/') || !is_writable(child)) {
            return false;
        }
    }
    return true;
}

void write_and_read(const node& tree) {
    std::stringstream stream;
    try {
        tree.serialize(stream);
    } catch (const serializer::wrong_format_exception&) {
        fuzz::check(!is_writable(tree), "what was read can be written");
        return;
    }
    fuzz::check(is_writable(tree), "what cannot be read is not written");
    fuzz::check(node(stream) == tree, "what was written is read as it was");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string text(data, data + size);
    std::istringstream plain(text);
    node expected;
    bool is_broken = false;
    try {
        expected = read(plain, 0);
    } catch (const broken&) {
        is_broken = true;
    } catch (const utf8::exception&) {
        is_broken = true;
    }
    std::istringstream in(text);
    serializer::document document;
    node& tree = document.root();
    try {
        tree.deserialize(in);
        fuzz::check(!is_broken, "a broken text is seen");
    } catch (const serializer::wrong_format_exception&) {
        fuzz::check(is_broken, "a whole text is read");
        return 0;
    } catch (const utf8::exception&) {
        fuzz::check(is_broken, "good UTF-8 is read");
        return 0;
    }
    fuzz::check(tree == expected, "the tree is the same");
    fuzz::check(in.peek() == plain.peek(), "the reader stops behind the element");
    write_and_read(tree);
    return 0;
}
