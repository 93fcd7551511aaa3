/// Transfer data: what was enciphered is read, and anything else is refused as it should be.
#define OPENSSL_SUPPRESS_DEPRECATED
#include "check.h"
#include "vfs_quilldeck/transfer/transfer_credentials.h"
#include "vfs_quilldeck/wire/base64.h"
#include "vfs_quilldeck/wire/exceptions.h"

#include <openssl/blowfish.h>
#include <openssl/evp.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <stdexcept>
#include <string>
#include <vector>

namespace {

using namespace vfs_quilldeck;

std::string encipher(const std::string& text, const std::string& digest) {
    std::vector<unsigned char> blocks((text.size() + 7) / 8 * 8);
    std::ranges::copy(text, blocks.begin());
    BF_KEY key;
    BF_set_key(&key, 24, reinterpret_cast<const unsigned char*>(digest.data()));
    for (std::size_t at = 0; at < blocks.size(); at += 8) {
        BF_ecb_encrypt(blocks.data() + at, blocks.data() + at, &key, BF_ENCRYPT);
    }
    std::vector<unsigned char> encoded(blocks.size() / 3 * 4 + 5);
    const int length =
        EVP_EncodeBlock(encoded.data(), blocks.data(), static_cast<int>(blocks.size()));
    return {encoded.begin(), encoded.begin() + length};
}

void decipher_anything(const std::string& data, const std::string& digest) {
    std::array<unsigned char, transfer_data_limit> decoded{};
    const std::size_t size = qd_crypt::decode_base64(data, decoded);
    try {
        const std::string text = decipher_transfer_data(data, digest);
        fuzz::check(size != 0 && size % 8 == 0 && digest.size() >= 24, "only whole blocks pass");
        fuzz::check(text.find('\0') == std::string::npos, "the text ends at the first zero");
    } catch (const exception& failure) {
        fuzz::check(size == 0 || digest.size() < 24, "only nothing is an invalid parameter");
        fuzz::check(failure.get_name() == L"Login failed", "the failure has its name");
    } catch (const std::runtime_error&) {
        fuzz::check(size % 8 != 0, "only a wrong length is told as one");
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    constexpr std::size_t key_size = 32;
    const std::string all(data, data + size);
    const std::string digest = all.substr(0, key_size);
    const std::string rest = all.substr(digest.size());
    decipher_anything(rest, digest);
    if (digest.size() == key_size && !rest.empty() && rest.size() <= transfer_data_limit) {
        fuzz::check(decipher_transfer_data(encipher(rest, digest), digest) ==
                        rest.substr(0, rest.find('\0')),
                    "what was enciphered is read");
    }
    return 0;
}
