#include "dialogs/login/login_settings.h"

#include "login_fixture.h"

namespace dialogs {

namespace {

using login_settings_test = login_test;

std::wstring loaded() {
    std::wstring username = L"old name";
    std::wstring password = L"old password";
    const bool found = load_credentials(username, password);
    return (found ? L"" : L"none, ") + username + L"|" + password;
}

TEST_F(login_settings_test, writes_each_unit_under_its_mask) {
    // U+D492 is the mask of the first place and U+D495 that of the fourth: such a character is
    // stored as the end of its text.
    const std::tuple<const wchar_t*, const wchar_t*, const char*, const wchar_t*> cases[] = {
        {L"demo", L"wrong", demo_wrong_bytes, L"demo|wrong"},
        {L"", L"", "00 00 00 00", L"|"},
        {L"\u00fc\u8a00", L"p", "6e d4 93 5e 00 00 e5 d4 00 00", L"\u00fc\u8a00|p"},
        {L"\ud492b", L"c", "00 00 f1 d4 00 00 f6 d4 00 00", L"|b"},
        {L"ab", L"\ud495c", "f3 d4 f1 d4 00 00 00 00 f5 d4 00 00", L"ab|"},
    };
    for (const auto& [username, password, bytes, read] : cases) {
        EXPECT_TRUE(store_credentials(username, password));
        EXPECT_EQ(registry(), "none\nnone\n3: " + std::string(bytes) + "\n");
        EXPECT_EQ(loaded(), read);
    }
    // The mask of a far place has passed zero.
    const std::wstring many(0x2B6E + 2, L'\u5b57');
    EXPECT_TRUE(store_credentials(many, L"p"));
    EXPECT_EQ(loaded(), many + L"|p");
}

TEST_F(login_settings_test, reads_whatever_stands_there) {
    EXPECT_EQ(loaded(), L"none, old name|old password");
    const std::tuple<std::string, DWORD, const wchar_t*> cases[] = {
        {"", REG_BINARY, L"|"},
        {"\xf3\xd4\xf1\xd4", REG_BINARY, L"ab|"},                               // no end
        {"\xf3\xd4\xf1", REG_BINARY, L"a|"},                                    // half a unit more
        {{"\xf3\xd4\x93\xd4\xf7\xd4\0\0\xf4\xd4\0\0", 12}, REG_BINARY, L"a|b"}, // unmasks to a zero
        {{"\xf3\xd4\0\0\xf6\xd4\0\0\xf1\xd4\0\0", 12}, REG_BINARY, L"a|b"},     // a third text
        {{"\xf3\xd4\0\0", 4}, REG_SZ, L"none, old name|old password"},
    };
    for (const auto& [bytes, type, expected] : cases) {
        RegSetKeyValueW(HKEY_CURRENT_USER, credentials_key, L"Data1", type, bytes.data(),
                        static_cast<DWORD>(bytes.size()));
        EXPECT_EQ(loaded(), expected);
    }
}

} // namespace

} // namespace dialogs
