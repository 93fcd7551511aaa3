#include "login_fixture.h"

#include "dialogs/sign_in.h"
#include "process_census.h"
#include "resources/dialog_ids.h"
#include "vfs_quilldeck/session.h"
#include "vfs_quilldeck/session_objects.h"

namespace dialogs {

namespace {

using support::answer_box;
using support::await_dialog;
using support::eventually;
using support::press;
using support::text_of;
using support::type;

std::wstring text_of(HWND dialog, int id) {
    return text_of(GetDlgItem(dialog, id));
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
    caller user;
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
    EXPECT_TRUE(user.answer());
    EXPECT_EQ(registry(), values(0, 0, "00 00 00 00"));
    EXPECT_EQ(vfs_quilldeck::get_user_info(nullptr).user_name, L"demo");
    EXPECT_TRUE(caller().answer());
}

TEST_F(login_test, cancels_and_changes_nothing) {
    for (const bool by_key : {true, false}) {
        set_flag(L"SavePass", 1);
        set_flag(L"AutoLogin", 0);
        set_credentials(demo_wrong);
        caller user;
        const HWND dialog = await_dialog(login_title);
        EXPECT_EQ(text_of(dialog, IDC_LOGIN_USERNAME), L"demo");
        EXPECT_EQ(text_of(dialog, IDC_LOGIN_PASSWORD), L"wrong");
        EXPECT_TRUE(IsDlgButtonChecked(dialog, IDC_LOGIN_SAVE_PASSWORD));
        EXPECT_FALSE(IsDlgButtonChecked(dialog, IDC_LOGIN_AUTO_LOGIN));
        type(dialog, IDC_LOGIN_USERNAME, L"somebody");
        CheckDlgButton(dialog, IDC_LOGIN_AUTO_LOGIN, BST_CHECKED);
        if (by_key) {
            support::press_key(dialog, VK_ESCAPE);
        } else {
            PostMessageW(dialog, WM_CLOSE, 0, 0);
        }
        EXPECT_FALSE(user.answer());
        EXPECT_EQ(registry(), values(1, 0, demo_wrong_bytes));
    }
}

TEST_F(login_test, signs_in_by_itself) {
    set_flag(L"AutoLogin", 1);
    set_credentials(demo_demo);
    EXPECT_TRUE(caller().answer());
    EXPECT_FALSE(waiting_was_told());
    EXPECT_EQ(registry(), values(0, 1, demo_demo_bytes));
    EXPECT_EQ(vfs_quilldeck::get_user_info(nullptr).user_name, L"demo");
}

TEST_F(login_test, stays_when_it_cannot_sign_in_by_itself) {
    set_flag(L"AutoLogin", 1);
    set_credentials(demo_wrong);
    caller user;
    const HWND box = await_dialog(L"Login failed");
    EXPECT_TRUE(waiting_was_told());
    EXPECT_EQ(support::count_dialogs(login_title), 0);
    expect_refusal(GetWindow(box, GW_OWNER));
    const HWND dialog = await_dialog(login_title);
    EXPECT_EQ(text_of(dialog, IDC_LOGIN_PASSWORD), L"wrong");
    EXPECT_TRUE(IsDlgButtonChecked(dialog, IDC_LOGIN_AUTO_LOGIN));
    type(dialog, IDC_LOGIN_PASSWORD, L"demo");
    press(dialog, IDOK);
    EXPECT_TRUE(user.answer());
    EXPECT_EQ(registry(), values(0, 1, demo_demo_bytes));
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

TEST_F(login_test, leaves_nothing_behind) {
    const auto open_and_cancel = [] {
        caller user;
        const HWND dialog = await_dialog(login_title);
        press(dialog, IDC_LOGIN_SAVE_PASSWORD);
        PostMessageW(dialog, WM_COMMAND, IDCANCEL, 0);
        EXPECT_FALSE(user.answer());
    };
    open_and_cancel();
    const auto before = support::count_process();
    for (int i = 0; i < 10; ++i) {
        open_and_cancel();
    }
    EXPECT_EQ(support::count_process(), before);
}

} // namespace

} // namespace dialogs
