#pragma once

#include "vfs_quilldeck/wire/request_params.h"

#include <string>
#include <string_view>

namespace vfs_quilldeck {

/// Encodes a key or a value for a request body, one UTF-16 code unit at a time. The wire differs
/// from RFC 3986 and from the form encoding, and the service counts on it: with `encode_reserved`
/// only 17 characters become "%XX"; blanks, control characters and all bytes above 0x7F go out raw;
/// U+0080 is the one byte 0x80; U+0800 is dropped; each half of a surrogate pair is a three-byte
/// sequence of its own.
std::string url_encode(std::wstring_view text, bool encode_reserved);

/// The body of a request: "key=value" joined by "&", in the given order. It is made in one piece of
/// memory, so that who sends a password can wipe it.
std::string encode_body(const request_params& params);

} // namespace vfs_quilldeck
