#include "serializer/token.h"

#include <utf8.h>

#include <algorithm>

namespace serializer {

namespace {

/// Whether a backslash goes before the character.
constexpr bool is_special(wchar_t c) {
    return c == L'\\' || c == L'<' || c == L'>';
}

constexpr bool is_ascii(wchar_t c) {
    return c < 0x80;
}

} // namespace

char* put_token(char* to, std::wstring_view text) {
    for (auto at = text.begin(); at != text.end();) {
        if (is_ascii(*at)) {
            *to = '\\';
            to += is_special(*at) ? 1 : 0;
            *to++ = static_cast<char>(*at++);
        } else {
            // Nearly all names and values are ASCII, for which the general conversion is slow.
            const auto end = std::find_if(at, text.end(), is_ascii);
            to = utf8::utf16to8(at, end, to);
            at = end;
        }
    }
    return to;
}

} // namespace serializer
