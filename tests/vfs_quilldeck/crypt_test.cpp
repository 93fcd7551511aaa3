#include "vfs_quilldeck/base64.h"
#include "vfs_quilldeck/blowfish.h"
#include "vfs_quilldeck/exceptions.h"
#include "vfs_quilldeck/md5.h"
#include "vfs_quilldeck/transfer_credentials.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <stdexcept>
#include <string>
#include <vector>

namespace vfs_quilldeck {

namespace {

using qd_crypt::blowfish;
using qd_crypt::blowfish_mode;
using bytes = std::vector<unsigned char>;

bytes from_hex(const std::string& text) {
    bytes out;
    for (std::size_t i = 0; i < text.size(); i += 2) {
        out.push_back(static_cast<unsigned char>(std::stoi(text.substr(i, 2), nullptr, 16)));
    }
    return out;
}

blowfish::block to_block(const std::string& hex) {
    blowfish::block block{};
    std::ranges::copy(from_hex(hex), block.begin());
    return block;
}

bytes process(const bytes& key, const std::string& vector, blowfish_mode mode, const bytes& input) {
    blowfish cipher;
    cipher.set_key(key, to_block(vector));
    bytes output(input.size());
    cipher.process(mode, input, output);
    return output;
}

const std::string zeros(16, '0');

TEST(md5, gives_the_published_digests) {
    EXPECT_EQ(qd_crypt::md5("").str(), "d41d8cd98f00b204e9800998ecf8427e");
    EXPECT_EQ(qd_crypt::md5("abc").str(), "900150983cd24fb0d6963f7d28e17f72");
    EXPECT_EQ(qd_crypt::md5(std::string(1, '\0')).str(), "93b885adfe0da089cdf634904fd59f71");
    EXPECT_EQ(
        qd_crypt::md5("12345678901234567890123456789012345678901234567890123456789012345678901"
                      "234567890")
            .str(),
        "57edf4a22be3c955ac49da2e2107b67a");
}

TEST(blowfish, deciphers_the_published_vectors) {
    const struct {
        std::string key, plain, cipher;
    } vectors[] = {
        {"0000000000000000", "0000000000000000", "4EF997456198DD78"},
        {"FFFFFFFFFFFFFFFF", "FFFFFFFFFFFFFFFF", "51866FD5B85ECB8A"},
        {"0123456789ABCDEF", "1111111111111111", "61F9C3802281B096"},
        {"F0", "FEDCBA9876543210", "F9AD597C49DB005E"},
        {"F0E1D2C3B4A5968778695A4B3C2D1E0F0011223344556677", "FEDCBA9876543210",
         "05044B62FA52D080"},
    };

    for (const auto& [key, plain, cipher] : vectors) {
        EXPECT_EQ(
            process(from_hex(key), zeros, blowfish_mode::ecb_decipher, from_hex(cipher + cipher)),
            from_hex(plain + plain));
    }
    const bytes chained =
        process(from_hex("0123456789ABCDEFF0E1D2C3B4A59687"), "FEDCBA9876543210",
                blowfish_mode::cbc_decipher,
                from_hex("6B77B4D63006DEE605B156E27403979358DEB9E7154616D959F1652BD5FF92CC"));
    EXPECT_EQ(std::string(chained.begin(), chained.end()),
              std::string("7654321 Now is the time for \0\0\0\0", 32));
}

TEST(blowfish, keeps_its_vector_from_buffer_to_buffer) {
    // Enciphering xors with what the block before gave, not with what it put out.
    blowfish cipher;
    cipher.set_key(from_hex("0000000000000000"), to_block("0102030405060708"));
    const bytes zero(8);
    bytes out(8);
    cipher.process(blowfish_mode::chained_encipher, zero, out);
    EXPECT_EQ(out, from_hex("4FFB9441649EDA70"));
    cipher.process(blowfish_mode::chained_encipher, zero, out);
    EXPECT_EQ(out, zero);
    cipher.reset_vector();
    cipher.process(blowfish_mode::cbc_decipher, from_hex("4EF997456198DD78"), out);
    EXPECT_EQ(out, from_hex("0102030405060708"));
    // In place, with the cipher text of before as the vector.
    out = from_hex("4EF997456198DD78");
    cipher.process(blowfish_mode::cbc_decipher, out, out);
    EXPECT_EQ(out, from_hex("4EF997456198DD78"));
}

TEST(blowfish, refuses_keys_and_buffers_of_wrong_length) {
    bytes key(57);
    for (std::size_t i = 0; i < key.size(); ++i) {
        key[i] = static_cast<unsigned char>(i * 7 + 1);
    }
    const bytes block(8, 0x5A);
    const auto deciphered = [&block](const bytes& with) {
        return process(with, zeros, blowfish_mode::ecb_decipher, block);
    };
    const bytes key_56(key.begin(), key.end() - 1);
    EXPECT_EQ(deciphered(key), deciphered(key_56));
    EXPECT_NE(deciphered(key), deciphered(bytes(key.begin(), key.end() - 2)));

    const auto failure_of = [](const auto& operation) -> std::string {
        try {
            operation();
        } catch (const std::exception& failure) {
            return failure.what();
        }
        return "none";
    };
    EXPECT_EQ(failure_of([&] { deciphered({}); }), "Incorrect key length");
    for (const std::size_t length : {0U, 7U, 12U}) {
        EXPECT_EQ(
            failure_of([&] { process(key, zeros, blowfish_mode::ecb_decipher, bytes(length)); }),
            "Incorrect buffer length");
    }
}

TEST(decode_base64, writes_what_the_groups_hold) {
    const struct {
        std::string text, decoded;
    } cases[] = {
        {"", ""},
        {"=", ""},
        {"A", ""},
        {"Zg==", "f"},
        {"Zm8=", "fo"},
        {"Zm9v", "foo"},
        {"Zm9vYg", "foob"},
        {"Zg==Zm9v", "f"},
        {"+/+/", "\xFB\xFF\xBF"},
        {"Zm9v\nYg==", "foo\x01\x88"},
        {"!!!!", std::string(3, '\0')},
    };

    for (const auto& [text, decoded] : cases) {
        bytes room(16, 0xEE);
        const std::size_t size = qd_crypt::decode_base64(text, room);
        EXPECT_EQ(std::string(room.begin(), room.begin() + static_cast<int>(size)), decoded);
        EXPECT_TRUE(std::all_of(room.begin() + static_cast<int>(size), room.end(),
                                [](unsigned char byte) { return byte == 0xEE; }));
    }
    bytes room(4, 0xEE);
    EXPECT_EQ(qd_crypt::decode_base64("Zm9vZm9v", std::span(room).first(3)), 3u);
    EXPECT_EQ(room[3], 0xEE);
}

// What another implementation of the cipher has enciphered.
TEST(decode_transfer_data, reads_the_services_fields) {
    const transfer_credentials login =
        decode_transfer_data(L"aL1VNdiidcXmz6ZVZjqRmfakvd4EpVo1pq5yS8Wr7Y83R2SgAdoljy7p1azdx4ZFLtMv"
                             L"I2SBXuvEsb1aUM4mTAJIDI"
                             L"Mb0RtS",
                             {L"J\u00F6rg \U0001F58B", L"p&s s", L"1007-ab"});
    EXPECT_EQ(login.host, "ftp://localhost:2121");
    EXPECT_EQ(login.user, "u7");
    EXPECT_EQ(login.password, "a<b 1");
    const transfer_credentials restored = decode_transfer_data(
        L"WkoVrkce4I9WPWaS2YtcG+PxlrMy6j05t2BOT/DPAls=", {L"0", L"0", L"1007-ab"});
    EXPECT_EQ(restored.host, "");
    EXPECT_EQ(restored.user, "u7");
    EXPECT_EQ(restored.password, "x");
}

TEST(decode_transfer_data, tells_data_that_cannot_be_read) {
    const std::vector<std::wstring> key{L"0", L"0", L"1"};
    std::wstring longest;
    for (int i = 0; i < 42; ++i) {
        longest += L"mer0inomy6GZ6vSKeibLoZnq9Ip6Jsuh"; // 24 times "a"
    }
    EXPECT_EQ(decode_transfer_data(longest, key).host, "");
    for (const std::wstring& data : {std::wstring(L""), std::wstring(L"="), std::wstring(L"A"),
                                     longest + L"mer0inomy6GZ6vSKeibLoZnq9Ip6Jsuh"}) {
        try {
            decode_transfer_data(data, key);
            ADD_FAILURE() << data;
        } catch (const exception& failure) {
            EXPECT_EQ(failure.get_name(), L"Login failed");
            EXPECT_EQ(failure.get_description(), L"Invalid parameter");
        }
    }
    EXPECT_THROW(decipher_transfer_data("mer0inomy6E=", ""), exception);
    EXPECT_THROW(decode_transfer_data(L"AAAAAAAAAAAAAAAA", key), std::runtime_error);
    EXPECT_THROW(decode_transfer_data(L"HVSnVsKOJCI=", key), exception)
        << "no document: 'no tag <'";
}

} // namespace

} // namespace vfs_quilldeck
