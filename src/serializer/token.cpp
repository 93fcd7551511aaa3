#include "serializer/token.h"

#include <utf8.h>

#include <algorithm>
#include <array>
#include <iterator>

namespace serializer {

namespace {

/// Whether a backslash goes before the character.
constexpr bool is_special(char c) {
    return c == '\\' || c == '<' || c == '>';
}

void escape_from(std::string& out, std::size_t from) {
    if (std::none_of(out.begin() + static_cast<std::ptrdiff_t>(from), out.end(), is_special)) {
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

} // namespace

void append_token(std::string& out, std::wstring_view text) {
    const std::size_t from = out.size();
    // Nearly all names and values are ASCII, for which the general conversion is slow.
    if (std::ranges::all_of(text, [](wchar_t c) { return c < 0x80; })) {
        out.resize(from + text.size());
        std::ranges::transform(text, out.begin() + static_cast<std::ptrdiff_t>(from),
                               [](wchar_t c) { return static_cast<char>(c); });
    } else {
        utf8::utf16to8(text.begin(), text.end(), std::back_inserter(out));
    }
    escape_from(out, from);
}

} // namespace serializer
