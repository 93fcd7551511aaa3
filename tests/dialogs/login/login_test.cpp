#include "login_fixture.h"

#include "dialogs/login/login_settings.h"
#include "dialogs/login/sign_in.h"
#include "process_census.h"
#include "resources/dialog_ids.h"
#include "service_url.h"
#include "store_control.h"
#include "utils/wipe.h"
#include "vfs_quilldeck/session/identity_block.h"
#include "vfs_quilldeck/session/session.h"
#include "vfs_quilldeck/session/session_objects.h"

namespace dialogs {

namespace {

using support::answer_box;
using support::await_dialog;
using support::eventually;
using support::press;
using support::type;

/// What the dialog shows: the password, and whether the boxes are checked.
void expect_shown(HWND dialog, const wchar_t* password, bool save_password, bool auto_login) {
    EXPECT_EQ(support::text_of(GetDlgItem(dialog, IDC_LOGIN_USERNAME)), L"demo");
    EXPECT_EQ(support::text_of(GetDlgItem(dialog, IDC_LOGIN_PASSWORD)), password);
    EXPECT_EQ(IsDlgButtonChecked(dialog, IDC_LOGIN_SAVE_PASSWORD), UINT{save_password});
    EXPECT_EQ(IsDlgButtonChecked(dialog, IDC_LOGIN_AUTO_LOGIN), UINT{auto_login});
}

/// The box of a refused login; the dialog is usable again when it is gone.
void expect_refusal(HWND dialog) {
    const HWND box = await_dialog(L"Login failed");
    EXPECT_EQ(GetWindow(box, GW_OWNER), dialog);
    EXPECT_EQ(support::message_of(box), L"The user name or the password is wrong.");
    EXPECT_EQ(support::icon_of(box), LoadIconW(nullptr, IDI_HAND));
    EXPECT_TRUE(answer_box(box, IDOK));
    EXPECT_TRUE(eventually([&] { return IsWindowEnabled(dialog) && IsWindowVisible(dialog); }));
}

TEST_F(login_test, stores_what_was_typed_and_goes_on_until_it_is_right) {
    auto user = need_store();
    const HWND dialog = await_dialog(login_title);
    EXPECT_TRUE(eventually(
        [&] { return support::focus_of(dialog) == GetDlgItem(dialog, IDC_LOGIN_USERNAME); }));
    EXPECT_TRUE(waiting_was_told());
    EXPECT_EQ(registry(), "none\nnone\nnone\n");

    type(dialog, IDC_LOGIN_USERNAME, L"demo");
    type(dialog, IDC_LOGIN_PASSWORD, L"wrong");
    CheckDlgButton(dialog, IDC_LOGIN_SAVE_PASSWORD, BST_CHECKED);
    press(dialog, IDOK);
    expect_refusal(dialog);
    EXPECT_TRUE(waiting_was_told());
    EXPECT_EQ(registry(), values(1, 0, demo_wrong_bytes));
    EXPECT_FALSE(vfs_quilldeck::is_logged_in(nullptr));

    type(dialog, IDC_LOGIN_PASSWORD, L"demo");
    CheckDlgButton(dialog, IDC_LOGIN_SAVE_PASSWORD, BST_UNCHECKED);
    support::press_key(dialog, VK_RETURN);
    EXPECT_TRUE(user.get());
    EXPECT_EQ(registry(), values(0, 0, "00 00 00 00"));
    EXPECT_EQ(vfs_quilldeck::get_user_info(nullptr).user_name, L"demo");
    EXPECT_TRUE(need_store().get());
}

TEST_F(login_test, cancels_and_leaves_nothing_changed_or_behind) {
    set_flag(L"SavePass", 1);
    set_flag(L"AutoLogin", 0);
    store_credentials(L"demo", L"wrong");
    support::process_census first;
    for (int round = 0; round < 11; ++round) {
        auto user = need_store();
        const HWND dialog = await_dialog(login_title);
        expect_shown(dialog, L"wrong", true, false);
        type(dialog, IDC_LOGIN_USERNAME, L"somebody");
        CheckDlgButton(dialog, IDC_LOGIN_AUTO_LOGIN, BST_CHECKED);
        if (round % 2 == 0) {
            support::press_key(dialog, VK_ESCAPE);
        } else {
            PostMessageW(dialog, WM_CLOSE, 0, 0);
        }
        EXPECT_FALSE(user.get());
        EXPECT_EQ(registry(), values(1, 0, demo_wrong_bytes));
        first = round == 0 ? support::count_process() : first;
    }
    EXPECT_EQ(support::count_process(), first);
}

TEST_F(login_test, signs_in_by_itself) {
    set_flag(L"AutoLogin", 1);
    store_credentials(L"demo", L"demo");
    EXPECT_TRUE(need_store().get());
    EXPECT_FALSE(waiting_was_told());
    EXPECT_EQ(registry(), values(0, 1, demo_demo_bytes));
}

TEST_F(login_test, stays_when_it_cannot_sign_in_by_itself) {
    set_flag(L"AutoLogin", 1);
    store_credentials(L"demo", L"wrong");
    auto user = need_store();
    const HWND box = await_dialog(L"Login failed");
    EXPECT_TRUE(waiting_was_told());
    EXPECT_EQ(support::find_dialog(login_title), nullptr);
    expect_refusal(GetWindow(box, GW_OWNER));
    const HWND dialog = await_dialog(login_title);
    expect_shown(dialog, L"wrong", false, true);
    type(dialog, IDC_LOGIN_PASSWORD, L"demo");
    press(dialog, IDOK);
    EXPECT_TRUE(user.get());
    EXPECT_EQ(registry(), values(0, 1, demo_demo_bytes));
}

TEST_F(login_test, tells_that_it_waits_whatever_came_of_signing_in_by_itself) {
    support::store_control control(support::environment("QUILLDECK_TEST_HTTPS_URL"));
    control.fault(
        {{"kind", "garbage"}, {"action", "login"}, {"body", "<R><UserID>1</UserID></R>"}});
    set_flag(L"AutoLogin", 1);
    store_credentials(L"demo", L"\xD800"); // no key can be made of half a pair
    auto user = need_store();
    EXPECT_TRUE(answer_box(await_dialog(L"Internal error"), IDOK));
    EXPECT_TRUE(waiting_was_told());
    PostMessageW(await_dialog(login_title), WM_COMMAND, IDCANCEL, 0);
    EXPECT_FALSE(user.get());
}

/// How often a text stands in the memory of this process. It is given with each unit changed, so
/// that the search finds nothing of its own.
int count_in_memory(const std::wstring& changed) {
    int count = 0;
    MEMORY_BASIC_INFORMATION region{};
    for (char* at = nullptr; VirtualQuery(at, &region, sizeof(region)) != 0;
         at = static_cast<char*>(region.BaseAddress) + region.RegionSize) {
        if (region.State != MEM_COMMIT || region.Protect != PAGE_READWRITE) {
            continue;
        }
        const auto* const units = static_cast<const wchar_t*>(region.BaseAddress);
        const std::size_t size = region.RegionSize / sizeof(wchar_t);
        for (std::size_t i = 0; i + changed.size() <= size; ++i) {
            std::size_t same = 0;
            while (same < changed.size() && (units[i + same] ^ 1) == changed[same]) {
                ++same;
            }
            count += same == changed.size() ? 1 : 0;
        }
    }
    return count;
}

TEST_F(login_test, leaves_no_password_in_memory) {
    support::store_control control(support::environment("QUILLDECK_TEST_HTTPS_URL"));
    for (const std::wstring changed : {L"qsnad1", L"unqrdbsdu!odwdrids!rdrnldr!dwdoy"}) {
        std::wstring password = changed;
        for (wchar_t& unit : password) {
            unit ^= 1;
        }
        const int before = count_in_memory(changed);
        EXPECT_GT(before, 0);
        set_flag(L"AutoLogin", 1);
        store_credentials(L"demo", password);
        utils::wipe(password);
        EXPECT_EQ(count_in_memory(changed), before - 1);
        control.fault(
            {{"kind", "garbage"}, {"action", "login"}, {"body", "<R><UserID>1</UserID></R>"}});
        EXPECT_TRUE(need_store().get());
        EXPECT_EQ(count_in_memory(changed), 0);
        vfs_quilldeck::write_shared_user_info(nullptr, {});
    }
}

TEST_F(login_test, asks_once_on_a_thread) {
    static int nested_answer;
    nested_answer = -1;
    std::thread user([] {
        utils::named_mutex mutex(vfs_quilldeck::login_mutex_name);
        SetTimer(nullptr, 0, 1, [](HWND, UINT, UINT_PTR timer, DWORD) {
            KillTimer(nullptr, timer);
            utils::named_mutex another(vfs_quilldeck::login_mutex_name);
            nested_answer = ensure_logged_in(another, nullptr);
        });
        EXPECT_FALSE(ensure_logged_in(mutex, nullptr));
        EXPECT_EQ(nested_answer, 0);
    });
    const HWND dialog = await_dialog(login_title);
    EXPECT_TRUE(eventually([] { return nested_answer != -1; }));
    PostMessageW(dialog, WM_COMMAND, IDCANCEL, 0);
    user.join();
}

} // namespace

} // namespace dialogs
