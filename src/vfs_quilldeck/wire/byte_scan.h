/// Looks at bytes eight at a time: a reply is mostly short runs of ASCII, for which the C library's
/// searches cost more by their call than by their work.
#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>

namespace vfs_quilldeck {

namespace detail {

inline constexpr std::uint64_t all_ones = 0x0101010101010101;
inline constexpr std::uint64_t all_tops = 0x80 * all_ones;

static_assert(std::endian::native == std::endian::little);

inline std::uint64_t eight_at(const char* at) {
    std::uint64_t bytes = 0;
    std::memcpy(&bytes, at, sizeof(bytes));
    return bytes;
}

/// The top bits of the bytes that are `c`. Above the lowest that is set, others may err.
inline std::uint64_t tops_of(std::uint64_t bytes, char c) {
    const std::uint64_t zeros = bytes ^ (all_ones * static_cast<unsigned char>(c));
    return (zeros - all_ones) & ~zeros & all_tops;
}

} // namespace detail

/// The place of the first `c` at or behind `from`, or the text's size.
inline std::size_t find_byte(std::string_view text, char c, std::size_t from) {
    std::size_t at = from;
    for (; at + sizeof(std::uint64_t) <= text.size(); at += sizeof(std::uint64_t)) {
        const std::uint64_t found = detail::tops_of(detail::eight_at(text.data() + at), c);
        if (found != 0) {
            return at + static_cast<std::size_t>(std::countr_zero(found)) / 8;
        }
    }
    while (at < text.size() && text[at] != c) {
        ++at;
    }
    return at;
}

/// Whether all bytes are ASCII, and no backslash is among them.
inline bool is_plain(std::string_view text) {
    std::size_t at = 0;
    for (; at + sizeof(std::uint64_t) <= text.size(); at += sizeof(std::uint64_t)) {
        const std::uint64_t bytes = detail::eight_at(text.data() + at);
        if (((bytes & detail::all_tops) | detail::tops_of(bytes, '\\')) != 0) {
            return false;
        }
    }
    for (; at < text.size(); ++at) {
        if (static_cast<unsigned char>(text[at]) >= 0x80 || text[at] == '\\') {
            return false;
        }
    }
    return true;
}

} // namespace vfs_quilldeck
