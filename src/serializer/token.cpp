#include "serializer/token.h"

#include <utf8.h>

#include <algorithm>
#include <iterator>

namespace serializer {

namespace {

template <class Unit>
constexpr bool is_special(Unit c) {
    return c == Unit{'\\'} || c == Unit{'<'} || c == Unit{'>'};
}

/// Nearly all names and values are ASCII, for which the general conversion is slow.
template <class Text>
bool is_ascii(const Text& text) {
    return std::ranges::all_of(text, [](auto c) { return (c & ~0x7F) == 0; });
}

void escape_from(std::string& out, std::size_t from) {
    if (std::none_of(out.begin() + static_cast<std::ptrdiff_t>(from), out.end(),
                     is_special<char>)) {
        return;
    }
    const std::string plain = out.substr(from);
    out.resize(from);
    for (const char c : plain) {
        if (is_special(c)) {
            out.push_back('\\');
        }
        out.push_back(c);
    }
}

void unescape(std::wstring& text) {
    auto to = text.begin();
    for (auto from = text.begin(); from != text.end(); ++from) {
        if (*from == L'\\' && from + 1 != text.end() && is_special(from[1])) {
            ++from;
        }
        *to++ = *from;
    }
    text.erase(to, text.end());
}

} // namespace

void append_token(std::string& out, std::wstring_view text) {
    const std::size_t from = out.size();
    if (is_ascii(text)) {
        out.resize(from + text.size());
        std::ranges::transform(text, out.begin() + static_cast<std::ptrdiff_t>(from),
                               [](wchar_t c) { return static_cast<char>(c); });
    } else {
        utf8::utf16to8(text.begin(), text.end(), std::back_inserter(out));
    }
    escape_from(out, from);
}

void read_token(std::streambuf& in, std::string& raw) {
    raw.clear();
    bool escaped = false;
    for (;;) {
        // The end of the stream has the low byte 0xFF as well.
        const char c = static_cast<char>(in.sgetc());
        if (c == '\xFF' || (!escaped && (c == '<' || c == '>'))) {
            return;
        }
        in.sbumpc();
        raw.push_back(c);
        escaped = !escaped && c == '\\';
    }
}

void decode_token(std::string_view raw, std::wstring& text) {
    text.clear();
    if (is_ascii(raw)) {
        text.resize(raw.size());
        std::ranges::copy(raw, text.begin());
    } else {
        utf8::utf8to16(raw.begin(), raw.end(), std::back_inserter(text));
    }
    if (raw.find('\\') != std::string_view::npos) {
        unescape(text);
    }
}

} // namespace serializer
