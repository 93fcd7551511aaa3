#include "vfs_quilldeck/email_address.h"
#include "vfs_quilldeck/text_encoding.h"
#include "vfs_quilldeck/url_encode.h"

#include <gtest/gtest.h>

#include <string>

namespace vfs_quilldeck {

namespace {

TEST(url_encode, is_the_services_own_encoding) {
    const struct {
        std::wstring text;
        std::string encoded;
    } cases[] = {
        {L"\"#%&+/<>?[\\]^`{|}", "%22%23%25%26%2B%2F%3C%3E%3F%5B%5C%5D%5E%60%7B%7C%7D"},
        {L" !$'()*,-.:;=@_~09azAZ\r\n\t\x01\x7F", " !$'()*,-.:;=@_~09azAZ\r\n\t\x01\x7F"},
        {std::wstring(L"a\0b", 3), std::string("a\0b", 3)},
        {L"\x80|\x81|\xFF", "\x80%7C\xC2\x81%7C\xC3\xBF"},
        {L"\x7FF|\x800|\x801|\xFFFF", "\xDF\xBF%7C%7C\xE0\xA0\x81%7C\xEF\xBF\xBF"},
        {L"\U0001F58B \xDC00", "\xED\xA0\xBD\xED\xB6\x8B \xED\xB0\x80"},
    };

    for (const auto& [text, encoded] : cases) {
        EXPECT_EQ(url_encode(text, true), encoded);
    }
    std::wstring ascii;
    for (wchar_t c = 0; c < 0x80; ++c) {
        ascii.push_back(c);
    }
    EXPECT_EQ(url_encode(ascii, false), std::string(ascii.begin(), ascii.end()));
    EXPECT_EQ(url_encode(ascii, true).size(), ascii.size() + std::size_t{2} * 17);

    EXPECT_EQ(encode_body({{L"b&", L"1 2"}, {L"a", L""}, {L"", L"\xE4"}, {L"a", L"=+"}}),
              "b%26=1 2&a=&=\xC3\xA4&a==%2B");
    EXPECT_EQ(encode_body({}), "");
}

TEST(utf8_to_wide, reads_what_can_be_read_and_passes_over_the_rest) {
    const struct {
        std::string bytes;
        std::wstring text;
    } cases[] = {
        {"", L""},
        {"a\x7F\xC2\x80\xDF\xBF\xE0\xA0\x80\xEF\xBF\xBF", L"a\x7F\x80\x7FF\x800\xFFFF"},
        {std::string("a\0b", 3), std::wstring(L"a\0b", 3)},
        {"\xED\xA0\xBD\xED\xB6\x8B", L"\U0001F58B"},
        {"\xEF\xBB\xBF<", L"\xFEFF<"},
        // A character above U+FFFF loses its upper bits.
        {"\xF0\x9F\x96\x8B|\xF7\xBF\xBF\xBF", L"\xF58B|\xFFFF"},
        // What leads no sequence, and what the end cuts off.
        {"\x80\xBF"
         "a\xF8\x88\xFF"
         "b",
         L"ab"},
        {"a\xC3", L"a"},
        {"\xE0\xA0", L""},
        {"\xF0\x9F\x96", L""},
        {"\xF0"
         "ab",
         L"ab"},
        {"\xE2\xC3\xA4", L"\x30E4"},
        // What follows is not looked at.
        {"\xC3"
         "A|",
         L"\x81|"},
        {"\xC0\x41", L"\xFFC1"},
    };

    for (const auto& [bytes, text] : cases) {
        EXPECT_EQ(utf8_to_wide(bytes), text) << bytes;
    }
    EXPECT_EQ(utf8_to_wide(wide_to_utf8(L"\u00E4\u20AC\U0001F58B")), L"\u00E4\u20AC\xF58B");
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
