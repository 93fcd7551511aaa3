#include "dialogs/login_settings.h"

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
    struct stored_and_read {
        const wchar_t* username;
        const wchar_t* password;
        const char* bytes;
        const wchar_t* read;
    };

    // U+D492 is the mask of the first place and U+D495 that of the fourth: such a character is
    // stored as the end of its text.
    const stored_and_read cases[] = {
        {L"demo", L"wrong", demo_wrong_bytes, L"demo|wrong"},
        {L"a", L"", "f3 d4 00 00 00 00", L"a|"},
        {L"", L"b", "00 00 f1 d4 00 00", L"|b"},
        {L"", L"", "00 00 00 00", L"|"},
        {L"\u00fc\u8a00", L"p", "6e d4 93 5e 00 00 e5 d4 00 00", L"\u00fc\u8a00|p"},
        {L"\ud492b", L"c", "00 00 f1 d4 00 00 f6 d4 00 00", L"|b"},
        {L"ab", L"\ud495c", "f3 d4 f1 d4 00 00 00 00 f5 d4 00 00", L"ab|"},
    };
    for (const auto& each : cases) {
        EXPECT_TRUE(store_credentials(each.username, each.password));
        EXPECT_EQ(registry(), "none\nnone\n3: " + std::string(each.bytes) + "\n");
        EXPECT_EQ(loaded(), each.read);
    }
    // The mask of a far place has passed zero.
    const std::wstring many(0x2B6E + 2, L'\u5b57');
    EXPECT_TRUE(store_credentials(many, L"p"));
    EXPECT_EQ(loaded(), many + L"|p");
}

TEST_F(login_settings_test, reads_whatever_stands_there) {
    EXPECT_EQ(loaded(), L"none, old name|old password");
    const std::pair<std::wstring, const wchar_t*> cases[] = {
        {L"", L"|"},
        {L"\xd4f3\xd4f1", L"ab|"},                      // no end
        {{L"\xd4f3\xd493\xd4f7\0\xd4f4\0", 6}, L"a|b"}, // unmasks to a zero
        {{L"\xd4f3\0\xd4f6\0\xd4f1\0", 6}, L"a|b"},     // a third text
    };
    for (const auto& [units, expected] : cases) {
        set_credentials(units);
        EXPECT_EQ(loaded(), expected);
    }
    const char half_a_unit_more[] = {'\xf3', '\xd4', '\xf1'};
    RegSetKeyValueW(HKEY_CURRENT_USER, credentials_key, L"Data1", REG_BINARY, half_a_unit_more, 3);
    EXPECT_EQ(loaded(), L"a|");
    set_credentials(demo_demo, REG_SZ);
    EXPECT_EQ(loaded(), L"none, old name|old password");
    set_flag(L"SavePass", 0x100);
    EXPECT_TRUE(load_login_settings().save_password);
    EXPECT_FALSE(load_login_settings().auto_login);
}

} // namespace

} // namespace dialogs
