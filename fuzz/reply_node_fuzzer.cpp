/// The parser against a plain recursive one that follows the format's rules word by word, on the
/// text that the bytes mean.
#include "check.h"
#include "vfs_quilldeck/wire/exceptions.h"
#include "vfs_quilldeck/wire/reply_node.h"
#include "vfs_quilldeck/wire/text_encoding.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace {

struct element {
    std::wstring name;
    std::wstring text;
    std::vector<element> children;
};

struct broken {};

struct tag {
    std::size_t start;
    std::size_t end;
    bool closing;
};

std::size_t find_bracket(const std::wstring& text, wchar_t bracket, std::size_t from) {
    for (std::size_t at = from; at < text.size(); ++at) {
        if (text[at] == bracket && (at == from || text[at - 1] != L'\\')) {
            return at;
        }
    }
    throw broken{};
}

tag read_tag(const std::wstring& text, std::size_t from) {
    const std::size_t start = find_bracket(text, L'<', from);
    const std::size_t end = find_bracket(text, L'>', start);
    return {start, end, end - start > 1 && text[start + 1] == L'/'};
}

std::wstring unescape(std::wstring text) {
    for (const auto* escape : {L"\\<", L"\\>"}) {
        std::size_t at = 0;
        while ((at = text.find(escape, at)) != std::wstring::npos) {
            text.erase(at++, 1);
        }
    }
    return text;
}

element parse(const std::wstring& text, std::size_t& from) {
    element parsed;
    const tag opening = read_tag(text, from);
    parsed.name = unescape(text.substr(opening.start + 1, opening.end - opening.start - 1));
    from = opening.end + 1;
    for (;;) {
        const tag next = read_tag(text, from);
        if (next.closing) {
            if (parsed.children.empty()) {
                parsed.text = unescape(text.substr(opening.end + 1, next.start - opening.end - 1));
            }
            from = next.end + 1;
            return parsed;
        }
        from = next.start;
        parsed.children.push_back(parse(text, from));
    }
}

void compare(const element& expected, const vfs_quilldeck::reply_node& node) {
    fuzz::check(node.name() == expected.name, "the name is the same");
    fuzz::check(node.text() == expected.text, "the text is the same");
    fuzz::check(node.is_leaf() == expected.children.empty(), "a leaf has no children");
    const auto children = node.children();
    fuzz::check(children.size() == expected.children.size(), "the children are as many");
    std::size_t with_children = 0;
    for (std::size_t i = 0; i < children.size(); ++i) {
        compare(expected.children[i], children[i]);
        const bool counts = !expected.children[i].children.empty() &&
                            expected.children[i].name == expected.children[0].name;
        with_children += counts ? 1 : 0;
    }
    if (!children.empty()) {
        const std::wstring& first = expected.children[0].name;
        fuzz::check(node.get_child_text(first) == expected.children[0].text, "the first counts");
        fuzz::check(node.get_children(first).size() == with_children, "leaves are left out");
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    vfs_quilldeck::reply_buffer bytes;
    fuzz::check(bytes.append(reinterpret_cast<const char*>(data), size), "there is memory");
    const std::wstring text = vfs_quilldeck::utf8_to_wide(bytes.view());
    element expected;
    bool is_broken = false;
    try {
        std::size_t from = 0;
        expected = parse(text, from);
    } catch (const broken&) {
        is_broken = true;
    }
    try {
        const auto node = vfs_quilldeck::reply_node::parse(
            std::make_shared<const vfs_quilldeck::reply_buffer>(std::move(bytes)));
        fuzz::check(!is_broken, "a missing bracket is seen");
        compare(expected, node);
        compare(expected, vfs_quilldeck::reply_node::parse(text));
    } catch (const vfs_quilldeck::exception& failure) {
        fuzz::check(is_broken, "what is whole is parsed");
        fuzz::check(failure.get_name() == L"Parse error", "the failure has its name");
    }
    return 0;
}
