/// The decoder beside OpenSSL's encoder, and its bounds on any text.
#include "check.h"
#include "vfs_quilldeck/wire/base64.h"

#include <openssl/evp.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    std::vector<unsigned char> encoded(size / 3 * 4 + 5);
    const int length = EVP_EncodeBlock(encoded.data(), data, static_cast<int>(size));
    const std::string text(encoded.begin(), encoded.begin() + length);
    std::vector<unsigned char> decoded(size);
    fuzz::check(qd_crypt::decode_base64(text, decoded) == size, "all bytes come back");
    fuzz::check(std::equal(decoded.begin(), decoded.end(), data), "as they were");

    const std::string any(data, data + size);
    const std::size_t digits = std::min(any.find('='), any.size());
    std::vector<unsigned char> room(size);
    const std::size_t written = qd_crypt::decode_base64(any, room);
    fuzz::check(written == digits * 6 / 8, "every eight bits give a byte");
    std::vector<unsigned char> small(written / 2);
    fuzz::check(qd_crypt::decode_base64(any, small) == small.size(), "the room is kept to");
    fuzz::check(std::equal(small.begin(), small.end(), room.begin()), "and filled alike");
    return 0;
}
