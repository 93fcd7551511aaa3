// What fuzz/transfer_cipher and fuzz/base64 do not compare with OpenSSL.
#include "vfs_quilldeck/transfer/blowfish.h"
#include "vfs_quilldeck/transfer/transfer_credentials.h"
#include "vfs_quilldeck/wire/base64.h"
#include "vfs_quilldeck/wire/exceptions.h"

#include <gtest/gtest.h>

#include <stdexcept>
#include <string>
#include <vector>

namespace vfs_quilldeck {

namespace {

using qd_crypt::blowfish;
using qd_crypt::blowfish_mode;
using bytes = std::vector<unsigned char>;

TEST(blowfish, chains_blocks_from_buffer_to_buffer) {
    // Published: eight zero bytes under the zero key.
    const bytes zero(8);
    const bytes enciphered{0x4E, 0xF9, 0x97, 0x45, 0x61, 0x98, 0xDD, 0x78};
    const blowfish::block vector{1, 2, 3, 4, 5, 6, 7, 8};
    blowfish cipher;
    cipher.set_key(zero, vector);
    bytes out(8);
    // Enciphering xors with what the block before gave, not with what it put out.
    cipher.process(blowfish_mode::chained_encipher, zero, out);
    EXPECT_EQ(out, (bytes{0x4F, 0xFB, 0x94, 0x41, 0x64, 0x9E, 0xDA, 0x70}));
    cipher.process(blowfish_mode::chained_encipher, zero, out);
    EXPECT_EQ(out, zero);
    cipher.reset_vector();
    cipher.process(blowfish_mode::cbc_decipher, enciphered, out);
    EXPECT_EQ(out, bytes(vector.begin(), vector.end()));
    // In place, with the cipher text of before as the vector.
    out = enciphered;
    cipher.process(blowfish_mode::cbc_decipher, out, out);
    EXPECT_EQ(out, enciphered);
}

TEST(blowfish, refuses_keys_and_buffers_of_wrong_length) {
    const auto decipher = [](std::size_t key_size, std::size_t size) -> std::string {
        bytes data(size);
        try {
            blowfish cipher;
            cipher.set_key(bytes(key_size, 7), {});
            cipher.process(blowfish_mode::ecb_decipher, data, data);
        } catch (const std::runtime_error& failure) {
            return failure.what();
        }
        return "";
    };
    EXPECT_EQ(decipher(57, 8), "");
    EXPECT_EQ(decipher(0, 8), "Incorrect key length");
    EXPECT_EQ(decipher(8, 0), "Incorrect buffer length");
    EXPECT_EQ(decipher(8, 12), "Incorrect buffer length");
}

TEST(decode_base64, takes_foreign_characters_for_zero_and_ends_at_the_padding) {
    bytes room(8);
    for (const auto& [text, decoded] : {std::pair("Zg==Zm9v", std::string("f")),
                                        std::pair("Zm9v\nYg==", std::string("foo\x01\x88")),
                                        std::pair("!!!!", std::string(3, '\0'))}) {
        const auto size = static_cast<std::ptrdiff_t>(qd_crypt::decode_base64(text, room));
        EXPECT_EQ(std::string(room.begin(), room.begin() + size), decoded);
    }
}

// What another implementation of the cipher has enciphered.
TEST(decode_transfer_data, reads_the_services_fields) {
    const transfer_credentials login =
        decode_transfer_data(L"aL1VNdiidcXmz6ZVZjqRmfakvd4EpVo1pq5yS8Wr7Y83R2SgAdoljy7p1azdx4ZFLtMv"
                             L"I2SBXuvEsb1aUM4mTAJIDI"
                             L"Mb0RtS",
                             {L"J\u00F6rg \U0001F58B", L"p&s s", L"1007-ab"});
    EXPECT_EQ(login.host + " " + login.user + " " + login.password,
              "ftp://localhost:2121 u7 a<b 1");

    const std::vector<std::wstring> key{L"0", L"0", L"1"};
    for (const auto data : {L"", L"=", L"A"}) {
        try {
            decode_transfer_data(data, key);
            ADD_FAILURE() << data;
        } catch (const exception& failure) {
            EXPECT_EQ(failure.get_name() + L": " + failure.get_description(),
                      L"Login failed: Invalid parameter");
        }
    }
    EXPECT_THROW(decode_transfer_data(L"AAAAAAAAAAAAAAAA", key), std::runtime_error);
    EXPECT_THROW(decode_transfer_data(L"HVSnVsKOJCI=", key), exception)
        << "no document: 'no tag <'";
}

} // namespace

} // namespace vfs_quilldeck
