#pragma once

#include <string>
#include <string_view>

namespace vfs_quilldeck {

/// Decodes a reply leniently and never fails: what is no sequence yields nothing, and a four-byte
/// sequence is cut to one 16-bit unit, which is why the service sends characters above U+FFFF as
/// two three-byte sequences.
std::wstring utf8_to_wide(std::string_view bytes);

/// Whether `utf8_to_wide` makes of each ASCII byte that character, and of nothing else one. It does
/// not of a sequence that is cut short, too long for its character or of four bytes.
bool is_regular_utf8(std::string_view bytes);

/// Each unit as a sequence of its own, surrogates too: regular, and what `utf8_to_wide` makes the
/// same units of.
std::string units_to_utf8(std::wstring_view text);

/// Checked conversion to UTF-8; throws `utf8::invalid_utf16`, a standard exception, for half a
/// surrogate pair.
std::string wide_to_utf8(std::wstring_view text);

} // namespace vfs_quilldeck
