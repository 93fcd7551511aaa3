#include "login_fixture.h"
#include "resources/dialog_ids.h"
#include "ui/url_static.h"

namespace dialogs {

namespace {

using support::await_dialog;
using support::eventually;
using support::focus_of;
using support::press;
using support::press_key;
using support::text_of;
using support::type;

constexpr int fields[] = {487, 488, 489, 490, 491, 492};

class new_profile : public login_test {
protected:
    new_profile() {
        dialog_ = await_dialog(login_title);
        for (HWND child = nullptr; (child = FindWindowExW(dialog_, child, L"#32770", nullptr));) {
            panel_ = child;
        }
        link_ = FindWindowExW(dialog_, nullptr, L"Static", L"New Account");
    }

    ~new_profile() override {
        PostMessageW(GetLastActivePopup(dialog_), WM_CLOSE, 0, 0); // a box that nobody expected
        PostMessageW(dialog_, WM_COMMAND, IDCANCEL, 0);
    }

    bool eventually_open(bool open) const {
        return eventually([&] {
            return IsWindowVisible(panel_) == BOOL{open} && IsWindowVisible(link_) == BOOL{!open};
        });
    }

    bool eventually_focused(HWND window) const {
        return eventually([&] { return focus_of(dialog_) == window; });
    }

    /// Whether `button`, and no other, has the mark of the one that Enter presses.
    bool eventually_marked(HWND button) const {
        return eventually([&] {
            for (const HWND each : {GetDlgItem(dialog_, IDOK), GetDlgItem(panel_, IDCANCEL),
                                    GetDlgItem(panel_, IDC_NEW_PROFILE_SIGN_UP)}) {
                const LONG_PTR kind = GetWindowLongPtrW(each, GWL_STYLE) & BS_TYPEMASK;
                if ((kind == BS_DEFPUSHBUTTON) != (each == button)) {
                    return false;
                }
            }
            return true;
        });
    }

    /// The height of the client area, in pixels of the usual font, as the other sizes.
    int client_height() const {
        RECT unit{0, 0, 4, 8};
        RECT client{};
        MapDialogRect(dialog_, &unit);
        GetClientRect(dialog_, &client);
        return MulDiv(client.bottom, 13, unit.bottom);
    }

    /// Presses a key and tells the number of the control that has the focus when it has moved.
    int focus_after(WPARAM key) const {
        const HWND before = focus_of(dialog_);
        press_key(dialog_, key);
        eventually([&] { return focus_of(dialog_) != before; });
        return GetDlgCtrlID(focus_of(dialog_));
    }

    void fill_in(const std::wstring& verify_password) const {
        const std::wstring texts[] = {
            name_, L"s€cret password", verify_password, name_ + L"@example.org", L"Bärta", L"言"};
        for (int i = 0; i < 6; ++i) {
            type(panel_, fields[i], texts[i]);
        }
    }

    const std::wstring name_ = L"berta" + std::to_wstring(GetTickCount64());
    HWND dialog_ = nullptr;
    HWND panel_ = nullptr;
    HWND link_ = nullptr;
    std::future<bool> user_ = need_store();
};

TEST_F(new_profile, opens_and_closes_its_panel) {
    const auto click = [this](short let_go_at) {
        PostMessageW(link_, WM_LBUTTONDOWN, MK_LBUTTON, MAKELPARAM(5, 5));
        PostMessageW(link_, WM_LBUTTONUP, 0, MAKELPARAM(5, let_go_at));
        PostMessageW(link_, WM_LBUTTONUP, 0, MAKELPARAM(5, 5));
    };
    RECT work{};
    SystemParametersInfoW(SPI_GETWORKAREA, 0, &work, 0);
    for (int round = 0; round < 2; ++round) {
        EXPECT_EQ(client_height(), 192);
        SetWindowPos(dialog_, nullptr, 10, work.bottom - 250, 0, 0, SWP_NOSIZE | SWP_NOZORDER);
        click(5);
        EXPECT_TRUE(eventually_open(true));
        EXPECT_EQ(client_height(), 413);
        RECT place{};
        GetWindowRect(dialog_, &place);
        EXPECT_LE(place.bottom, work.bottom);
        press(panel_, IDCANCEL);
        EXPECT_TRUE(eventually_open(false));
    }
    // A press that was let go elsewhere is none.
    click(500);
    EXPECT_TRUE(eventually_focused(link_));
    EXPECT_FALSE(IsWindowVisible(panel_));
}

TEST_F(new_profile, is_reached_by_keys) {
    for (const int id : {302, 484, 485, IDOK, GetDlgCtrlID(link_)}) {
        EXPECT_EQ(focus_after(VK_TAB), id);
    }
    for (const WPARAM key : {WPARAM{VK_SPACE}, WPARAM{VK_RETURN}}) {
        press_key(dialog_, key);
        EXPECT_TRUE(eventually_open(true));
        EXPECT_TRUE(eventually_focused(GetDlgItem(panel_, fields[0])));
        EXPECT_TRUE(eventually_marked(GetDlgItem(panel_, IDC_NEW_PROFILE_SIGN_UP)));
        for (const int id : {488, 489, 490, 491, 492, 494, IDCANCEL, IDC_LOGIN_USERNAME}) {
            EXPECT_EQ(focus_after(VK_TAB), id);
        }
        PostMessageW(dialog_, WM_NEXTDLGCTL, 1, FALSE); // backwards
        EXPECT_TRUE(eventually_focused(GetDlgItem(panel_, IDCANCEL)));
        EXPECT_TRUE(eventually_marked(GetDlgItem(panel_, IDCANCEL)));
        press_key(dialog_, key == VK_SPACE ? WPARAM{VK_ESCAPE} : WPARAM{VK_RETURN});
        EXPECT_TRUE(eventually_open(false));
        EXPECT_TRUE(eventually_focused(link_));
        EXPECT_TRUE(eventually_marked(GetDlgItem(dialog_, IDOK)));
    }
}

TEST_F(new_profile, keeps_its_fields_after_a_failure_and_hands_the_name_on) {
    SendMessageW(dialog_, ui::WM_LINK_CLICKED, 0, 0);
    fill_in(L"another");
    press_key(dialog_, VK_RETURN); // in the first field
    HWND box = await_dialog(L"Error creating profile");
    EXPECT_EQ(support::message_of(box), L"The two passwords differ.");
    EXPECT_TRUE(support::answer_box(box, IDOK));
    EXPECT_TRUE(IsWindowVisible(panel_));
    EXPECT_EQ(text_of(GetDlgItem(panel_, 492)), L"言");

    type(dialog_, IDC_LOGIN_PASSWORD, L"somebody's");
    fill_in(L"s€cret password");
    press(panel_, IDC_NEW_PROFILE_SIGN_UP);
    box = await_dialog(L"Error creating profile");
    ASSERT_EQ(support::message_of(box), L"Your account has been successfully created!");
    EXPECT_FALSE(IsWindowVisible(panel_));
    EXPECT_TRUE(support::answer_box(box, IDOK));
    for (const int id : fields) {
        EXPECT_EQ(text_of(GetDlgItem(panel_, id)), L"");
    }
    EXPECT_EQ(text_of(GetDlgItem(dialog_, IDC_LOGIN_USERNAME)), name_);
    EXPECT_EQ(text_of(GetDlgItem(dialog_, IDC_LOGIN_PASSWORD)), L"");
    EXPECT_TRUE(eventually_focused(GetDlgItem(dialog_, IDC_LOGIN_PASSWORD)));
    EXPECT_EQ(registry(), "none\nnone\nnone\n");

    type(dialog_, IDC_LOGIN_PASSWORD, L"s€cret password");
    press(dialog_, IDOK);
    EXPECT_TRUE(user_.get());
}

} // namespace

} // namespace dialogs
