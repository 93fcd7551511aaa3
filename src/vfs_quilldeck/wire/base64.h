#pragma once

#include <cstddef>
#include <span>
#include <string_view>

namespace qd_crypt {

/// Decodes Base64 (RFC 4648, section 4) and answers the number of bytes written. Characters outside
/// the alphabet count as value 0; the first "=" ends the text, after what its group holds has been
/// written. What does not fit into `output` is not written.
std::size_t decode_base64(std::string_view text, std::span<unsigned char> output);

} // namespace qd_crypt
