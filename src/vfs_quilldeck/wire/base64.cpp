#include "vfs_quilldeck/wire/base64.h"

#include <cstdint>

namespace qd_crypt {

namespace {

std::uint32_t value_of(char c) {
    constexpr std::string_view alphabet =
        "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    const std::size_t at = alphabet.find(c);
    return at == std::string_view::npos ? 0 : static_cast<std::uint32_t>(at);
}

} // namespace

std::size_t decode_base64(std::string_view text, std::span<unsigned char> output) {
    std::size_t written = 0;
    std::uint32_t bits = 0;
    unsigned held = 0;
    for (const char c : text) {
        if (c == '=') {
            break;
        }
        bits = bits << 6U | value_of(c);
        held += 6;
        if (held >= 8) {
            held -= 8;
            if (written == output.size()) {
                break;
            }
            output[written++] = static_cast<unsigned char>(bits >> held);
        }
    }
    return written;
}

} // namespace qd_crypt
