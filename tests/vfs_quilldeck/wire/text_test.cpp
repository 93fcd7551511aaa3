// What fuzz/text_encoding does not compare with the standard encoding.
#include "vfs_quilldeck/items/email_address.h"
#include "vfs_quilldeck/wire/text_encoding.h"
#include "vfs_quilldeck/wire/url_encode.h"

#include <gtest/gtest.h>

#include <string>

namespace vfs_quilldeck {

namespace {

TEST(url_encode, is_the_services_own_encoding) {
    std::wstring ascii;
    for (wchar_t c = 0; c < 0x80; ++c) {
        ascii.push_back(c);
    }
    EXPECT_EQ(url_encode(ascii, false), std::string(ascii.begin(), ascii.end()));
    EXPECT_EQ(url_encode(ascii, true).size(), ascii.size() + std::size_t{2} * 17);
    EXPECT_EQ(url_encode(L"\"#%&+/<>?[\\]^`{|}", true),
              "%22%23%25%26%2B%2F%3C%3E%3F%5B%5C%5D%5E%60%7B%7C%7D");
    EXPECT_EQ(url_encode(L"\x80 \x81 \x7FF \x800 \x801 \U0001F58B \xDC00", true),
              "\x80 \xC2\x81 \xDF\xBF  \xE0\xA0\x81 \xED\xA0\xBD\xED\xB6\x8B \xED\xB0\x80");
    EXPECT_EQ(encode_body({{L"b&", L"1 2"}, {L"a", L""}, {L"", L"\xE4"}, {L"a", L"=+"}}),
              "b%26=1 2&a=&=\xC3\xA4&a==%2B");
}

TEST(utf8_to_wide, passes_over_what_cannot_be_read) {
    // Bytes that lead no sequence, sequences that the end cuts off, and those whose followers are
    // not looked at. A character above U+FFFF loses its upper bits.
    for (const auto& [bytes, text] : {std::pair("\x80\xBF"
                                                "a\xF8\x88\xFF"
                                                "b",
                                                L"ab"),
                                      std::pair("a\xC3", L"a"), std::pair("\xF0\x9F\x96", L""),
                                      std::pair("\xF0"
                                                "ab",
                                                L"ab"),
                                      std::pair("\xE2\xC3\xA4", L"\x30E4"),
                                      std::pair("\xC3"
                                                "A|",
                                                L"\x81|"),
                                      std::pair("\xF0\x9F\x96\x8B", L"\xF58B")}) {
        EXPECT_EQ(utf8_to_wide(bytes), text) << bytes;
    }
    EXPECT_THROW(wide_to_utf8(L"\xD83D"), std::exception);
}

TEST(is_valid_email, takes_a_first_look) {
    for (const auto text :
         {L"a@b.c", L"a@.bc", L"a@b..", L"x.y@z.q", L"a@@.c", L"\u00E4@\u00F6.d"}) {
        EXPECT_TRUE(is_valid_email(text)) << text;
    }
    for (const auto text : {L"", L"a@.c", L"a@bc.", L"@b.cc", L"john.smith", L"a.b@c", L"abcde"}) {
        EXPECT_FALSE(is_valid_email(text)) << text;
    }
    for (const wchar_t c : std::wstring(L" #!?&\\|/<>\n\r")) {
        EXPECT_FALSE(is_valid_email(std::wstring(L"a@b.c") + c)) << static_cast<int>(c);
    }
}

} // namespace

} // namespace vfs_quilldeck
