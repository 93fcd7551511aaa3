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

} // namespace

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

std::string wide_to_utf8(std::wstring_view text) {
    std::string out;
    utf8::utf16to8(text.begin(), text.end(), std::back_inserter(out));
    return out;
}

} // namespace vfs_quilldeck
