#include "vfs_quilldeck/wire/text_encoding.h"

#include <utf8.h>

#include <cstddef>
#include <cstdint>
#include <iterator>

namespace vfs_quilldeck {

namespace {

/// The bytes that follow the lead byte, -1 for a byte that leads no sequence.
constexpr int following(std::uint8_t lead) {
    if (lead < 0x80) {
        return 0;
    }
    if (lead < 0xC0 || lead > 0xF7) {
        return -1;
    }
    if (lead < 0xE0) {
        return 1;
    }
    return lead < 0xF0 ? 2 : 3;
}

constexpr std::uint32_t lead_value(std::uint8_t lead, int more) {
    constexpr std::uint32_t first[] = {0x00, 0xC0, 0xE0, 0xF0};
    return lead - first[more];
}

constexpr std::size_t block_size = 32;

/// Nearly all of a reply is ASCII.
bool is_ascii_block(const char* bytes) {
    unsigned tops = 0;
    for (std::size_t i = 0; i < block_size; ++i) {
        tops |= static_cast<std::uint8_t>(bytes[i]);
    }
    return tops < 0x80;
}

} // namespace

bool is_regular_utf8(std::string_view bytes) {
    const std::size_t size = bytes.size();
    std::size_t at = 0;
    const auto follows = [&bytes](std::size_t place, std::uint8_t least = 0x80) {
        const auto byte = static_cast<std::uint8_t>(bytes[place]);
        return byte >= least && byte < 0xC0;
    };
    while (at < size) {
        if (size - at >= block_size && is_ascii_block(bytes.data() + at)) {
            at += block_size;
            continue;
        }
        const auto lead = static_cast<std::uint8_t>(bytes[at]);
        const int more = following(lead);
        if (more == 0) {
            ++at;
        } else if (more == 1 && lead >= 0xC2 && size - at > 1 && follows(at + 1)) {
            at += 2;
        } else if (more == 2 && size - at > 2 && follows(at + 1, lead == 0xE0 ? 0xA0 : 0x80) &&
                   follows(at + 2)) {
            at += 3;
        } else {
            return false;
        }
    }
    return true;
}

std::wstring utf8_to_wide(std::string_view bytes) {
    std::wstring out(bytes.size(), L'\0');
    auto* to = out.data();
    const std::size_t size = bytes.size();
    std::size_t at = 0;
    while (at < size) {
        const auto lead = static_cast<std::uint8_t>(bytes[at]);
        if (lead < 0x80) {
            *to++ = static_cast<wchar_t>(lead);
            ++at;
            continue;
        }
        const int more = following(lead);
        if (more < 0 || static_cast<std::size_t>(more) >= size - at) {
            ++at;
            continue;
        }
        // The sum wraps where a following byte is none, as the arithmetic of 16 bits does.
        std::uint32_t value = lead_value(lead, more);
        for (int i = 1; i <= more; ++i) {
            value = value * 64 +
                    static_cast<std::uint8_t>(bytes[at + static_cast<std::size_t>(i)]) - 0x80U;
        }
        *to++ = static_cast<wchar_t>(static_cast<char16_t>(value));
        at += static_cast<std::size_t>(more) + 1;
    }
    out.resize(static_cast<std::size_t>(to - out.data()));
    return out;
}

std::string units_to_utf8(std::wstring_view text) {
    std::string out;
    out.reserve(text.size());
    const auto put = [&out](std::uint32_t byte) {
        out.push_back(static_cast<char>(byte));
    };
    for (const wchar_t unit : text) {
        const std::uint32_t c = static_cast<char16_t>(unit);
        if (c < 0x80) {
            put(c);
        } else if (c < 0x800) {
            put(0xC0U + (c >> 6U));
            put(0x80U + (c & 0x3FU));
        } else {
            put(0xE0U + (c >> 12U));
            put(0x80U + ((c >> 6U) & 0x3FU));
            put(0x80U + (c & 0x3FU));
        }
    }
    return out;
}

std::string wide_to_utf8(std::wstring_view text) {
    std::string out;
    utf8::utf16to8(text.begin(), text.end(), std::back_inserter(out));
    return out;
}

} // namespace vfs_quilldeck
