/// Names and values as they stand in the settings text: UTF-8 in which a backslash precedes every
/// `\`, `<` and `>`.
#pragma once

#include <streambuf>
#include <string>
#include <string_view>

namespace serializer {

/// Appends the encoded form of `text`. Throws `utf8::invalid_utf16` for half a surrogate pair.
void append_token(std::string& out, std::wstring_view text);

/// Reads bytes into `raw` up to an angle bracket that no backslash escapes, which it leaves in the
/// stream, or to the stream's end. The byte 0xFF, which UTF-8 never holds, ends a token too.
void read_token(std::streambuf& in, std::string& raw);

/// Replaces `text` by that of an encoded token. A backslash before anything but `\`, `<` and `>` is
/// itself, so that a path written by hand is read as it was meant. Throws the failures of
/// `utf8::exception`; the text is that before the fault then.
void decode_token(std::string_view raw, std::wstring& text);

} // namespace serializer
