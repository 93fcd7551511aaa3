#include "vfs_quilldeck/wire/url_encode.h"

#include <cstdint>

namespace vfs_quilldeck {

namespace {

constexpr std::string_view reserved = "\"#%&+/<>?[\\]^`{|}";

void append_encoded(std::string& out, std::wstring_view text, bool encode_reserved) {
    constexpr std::string_view digits = "0123456789ABCDEF";
    const auto put = [&out](std::uint32_t byte) {
        out.push_back(static_cast<char>(byte));
    };
    for (const wchar_t unit : text) {
        const auto c = static_cast<char16_t>(unit);
        if (c <= 0x80) {
            if (encode_reserved && reserved.find(static_cast<char>(c)) != reserved.npos) {
                out.push_back('%');
                out.push_back(digits[c >> 4U]);
                out.push_back(digits[c & 0xFU]);
            } else {
                put(c);
            }
        } else if (c <= 0x7FF) {
            put(0xC0U + (c >> 6U));
            put(0x80U + (c & 0x3FU));
        } else if (c > 0x800) {
            put(0xE0U + (c >> 12U));
            put(0x80U + ((c >> 6U) & 0x3FU));
            put(0x80U + (c & 0x3FU));
        }
    }
}

} // namespace

std::string url_encode(std::wstring_view text, bool encode_reserved) {
    std::string out;
    out.reserve(text.size());
    append_encoded(out, text, encode_reserved);
    return out;
}

std::string encode_body(const request_params& params) {
    constexpr std::size_t longest_unit = 3;
    std::size_t longest = 0;
    for (const auto& [key, value] : params) {
        longest += longest_unit * (key.size() + value.size()) + 2;
    }
    std::string body;
    body.reserve(longest);
    for (const auto& [key, value] : params) {
        if (!body.empty()) {
            body.push_back('&');
        }
        append_encoded(body, key, true);
        body.push_back('=');
        append_encoded(body, value, true);
    }
    return body;
}

} // namespace vfs_quilldeck
