#include "vfs_quilldeck/transfer/blowfish.h"
#include "vfs_quilldeck/transfer/transfer_credentials.h"
#include "vfs_quilldeck/wire/base64.h"
#include "vfs_quilldeck/wire/exceptions.h"

#include <algorithm>
#include <array>
#include <span>

namespace vfs_quilldeck {

namespace {

constexpr std::size_t key_size = 24;

} // namespace

std::string decipher_transfer_data(std::string_view data, std::string_view digest) {
    std::array<unsigned char, transfer_data_limit> enciphered{};
    const std::size_t size = qd_crypt::decode_base64(data, enciphered);
    if (digest.size() < key_size || size == 0) {
        throw exception(L"Login failed", L"Invalid parameter");
    }
    std::array<unsigned char, key_size> key{};
    std::ranges::copy(digest.substr(0, key_size), key.begin());
    qd_crypt::blowfish cipher;
    cipher.set_key(key, {});
    std::array<unsigned char, transfer_data_limit> plain{};
    cipher.process(qd_crypt::blowfish_mode::ecb_decipher, std::span(enciphered).first(size), plain);
    return {plain.begin(), std::ranges::find(plain, '\0')};
}

} // namespace vfs_quilldeck
