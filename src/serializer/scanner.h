#pragma once

#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <memory>
#include <string_view>

#ifdef __SSE2__
#include <emmintrin.h>
#endif

namespace serializer {

/// A name or value: its bytes in the settings text, and what they mean.
struct token {
    std::string_view raw;
    std::wstring_view text;
};

/// Takes tokens and single bytes from a settings text. What is done for nearly each token stands
/// here, so that it is compiled into the reader.
class scanner {
public:
    /// The text has to outlive the scanner.
    explicit scanner(std::string_view text)
        : at_(text.data()), end_(text.data() + text.size()),
          room_(std::make_unique_for_overwrite<wchar_t[]>(text.size() + block_size)) {}

    /// How many bytes are left.
    std::size_t left() const { return static_cast<std::size_t>(end_ - at_); }

    bool next_is(char c) const { return at_ != end_ && *at_ == c; }

    /// Takes the byte `c`, if it is the next one.
    bool take(char c) {
        const bool is_next = next_is(c);
        at_ += is_next ? 1 : 0;
        return is_next;
    }

    /// Takes these bytes and `c` behind them, if they are the next ones.
    bool take(std::string_view bytes, char c) {
        if (left() <= bytes.size() || at_[bytes.size()] != c ||
            std::memcmp(at_, bytes.data(), bytes.size()) != 0) {
            return false;
        }
        at_ += bytes.size() + 1;
        return true;
    }

    /// Takes what is before the next angle bracket that no backslash escapes, or before the end.
    /// The byte 0xFF, which UTF-8 never holds, ends a token too. A backslash before anything but
    /// `\`, `<` and `>` is itself, so that a path written by hand is read as it was meant. Throws
    /// the failures of `utf8::exception`.
    ///
    /// The token's text is valid until the next call; `kept`, the text of the last call, stays
    /// until the one after that.
    token take_token(std::wstring_view kept = {}) {
        const char* const begin = at_;
        wchar_t* const text = room_.get() + kept.size();
        wchar_t* to = text;
        for (;;) {
            const std::size_t plain = copy_plain(to);
            at_ += plain;
            to += plain;
            if (at_ == end_ || is_bracket(*at_) || *at_ == no_utf8) {
                return {{begin, at_}, {text, to}};
            }
            to = *at_ == '\\' ? take_escaped(to) : take_character(to);
        }
    }

private:
    /// The bytes that are looked at in one go: most names and values are shorter, so that the
    /// processor seldom guesses wrong when it gets to their end.
    static constexpr std::size_t block_size = 16;
    static constexpr char no_utf8 = '\xFF';

    /// One bit for each byte of a block that is not plain, the lowest for the first.
    static unsigned find_others(const std::array<char, block_size>& block) {
        unsigned others = 0;
#ifdef __SSE2__
        // The two angle brackets differ in one bit. The top bit is that of what is not ASCII.
        const auto bytes = std::bit_cast<__m128i>(block);
        const __m128i brackets =
            _mm_cmpeq_epi8(_mm_and_si128(bytes, _mm_set1_epi8(~2)), _mm_set1_epi8('<'));
        const __m128i backslashes = _mm_cmpeq_epi8(bytes, _mm_set1_epi8('\\'));
        others = static_cast<unsigned>(
            _mm_movemask_epi8(_mm_or_si128(_mm_or_si128(brackets, backslashes), bytes)));
#else
        for (std::size_t i = 0; i < block_size; ++i) {
            others |= is_plain(block[i]) ? 0U : 1U << i;
        }
#endif
        return others;
    }

    /// Copies what is ASCII without a backslash or an angle bracket, and returns its size.
    std::size_t copy_plain(wchar_t* to) const {
        std::size_t size = 0;
        for (; left() - size >= block_size; size += block_size) {
            std::array<char, block_size> block;
            std::memcpy(block.data(), at_ + size, block_size);
            for (std::size_t i = 0; i < block_size; ++i) {
                to[size + i] = static_cast<unsigned char>(block[i]);
            }
            if (const unsigned others = find_others(block); others != 0) {
                return size + static_cast<std::size_t>(std::countr_zero(others));
            }
        }
        for (; size != left() && is_plain(at_[size]); ++size) {
            to[size] = static_cast<unsigned char>(at_[size]);
        }
        return size;
    }

    static bool is_bracket(char c) { return c == '<' || c == '>'; }

    static bool is_plain(char c) {
        return static_cast<unsigned char>(c) < 0x80 && c != '\\' && !is_bracket(c);
    }

    /// Takes a backslash and what it escapes, or the backslash alone.
    wchar_t* take_escaped(wchar_t* to) {
        const bool escapes = left() > 1 && (at_[1] == '\\' || is_bracket(at_[1]));
        at_ += escapes ? 1 : 0;
        *to++ = static_cast<unsigned char>(*at_++);
        return to;
    }

    /// Takes one character that is not ASCII.
    wchar_t* take_character(wchar_t* to);

    const char* at_;
    const char* end_;
    /// Room for the texts of two tokens and for what a block copies behind them.
    std::unique_ptr<wchar_t[]> room_;
};

} // namespace serializer
