#include "companions/companion_program.h"
#include "companions/session_state.h"
#include "companions/tray_ids.h"
#include "companions/tray_window.h"
#include "running_program.h"
#include "vfs_quilldeck/session/companion_process.h"
#include "vfs_quilldeck/session/identity_block.h"
#include "vfs_quilldeck/session/session_objects.h"

#include <gtest/gtest.h>

#include <memory>
#include <vector>

namespace companions_test {

namespace {

using namespace vfs_quilldeck;

constexpr UINT icon_message = companions::tray_window::icon_message;
constexpr auto menu_class = L"#32768";
constexpr auto dialog_class = L"#32770";
const vfs::user_info anna{L"1", L"2", L"anna", L"en", L"0"};

/// The orders that the taskbar got, and the bytes of the last one that carried a tip.
std::vector<ULONG_PTR> orders;
std::string last_tip;

/// A taskbar as programs find it: the platform's own is not there without a screen. It refuses to
/// take an icon twice, and does not hear of one whose window is gone.
LRESULT CALLBACK taskbar_proc(HWND window, UINT message, WPARAM wparam, LPARAM lparam) {
    if (message != WM_COPYDATA || !IsWindow(reinterpret_cast<HWND>(wparam))) {
        return DefWindowProcW(window, message, wparam, lparam);
    }
    const auto* const order = reinterpret_cast<const COPYDATASTRUCT*>(lparam);
    const bool taken = order->dwData != NIM_ADD || orders.empty();
    orders.push_back(order->dwData);
    if (order->dwData == NIM_ADD || order->dwData == NIM_MODIFY) {
        last_tip.assign(static_cast<const char*>(order->lpData), order->cbData);
    }
    return taken;
}

bool last_tip_is(const std::wstring& tip) {
    const std::string bytes(reinterpret_cast<const char*>(tip.c_str()), 2 * tip.size() + 2);
    return last_tip.find(bytes) != std::string::npos;
}

class tray : public testing::Test {
protected:
    void SetUp() override {
        ASSERT_TRUE(eventually([] { return !ensure_tray(nullptr, false); }));
        ASSERT_TRUE(eventually([] { return !ensure_session(nullptr, false); }));
        start();
    }

    void start() {
        process_ = std::make_unique<running_program>(beside_us(tray_program));
        ASSERT_TRUE(shows(companions::tray_window_class));
        // It answers only when it is complete.
        SendMessageW(window(), WM_NULL, 0, 0);
    }

    HWND window() const { return process_->window(companions::tray_window_class); }

    void send_command(WPARAM id) const { SendMessageW(window(), WM_COMMAND, id, 0); }

    void icon_event(WORD event) const { PostMessageW(window(), icon_message, 0, event); }

    bool shows(const wchar_t* class_name, bool expected = true) const {
        return eventually([&] { return (process_->window(class_name) != nullptr) == expected; });
    }

    /// Opens the menu, presses the key of Sign out, and leaves the menu if it is still open.
    void choose_sign_out() const {
        icon_event(WM_CONTEXTMENU);
        ASSERT_TRUE(shows(menu_class));
        PostMessageW(window(), WM_CHAR, L's', 0);
        PostMessageW(window(), WM_KEYDOWN, VK_ESCAPE, 0);
        ASSERT_TRUE(shows(menu_class, false));
    }

    std::unique_ptr<running_program> process_;
};

TEST_F(tray, is_one_and_ends_by_its_menu_or_with_the_logon_session) {
    EXPECT_TRUE(ensure_tray(nullptr, false));
    EXPECT_EQ(running_program(beside_us(tray_program)).wait(), 2u);
    send_command(ID_TRAY_EXIT);
    EXPECT_EQ(process_->wait(), 0u);
    EXPECT_FALSE(ensure_tray(nullptr, false));
    start();
    SendMessageW(window(), WM_ENDSESSION, TRUE, 0);
    EXPECT_EQ(process_->wait(), 0u);
}

TEST_F(tray, signs_out_at_the_session_process_and_never_starts_it) {
    send_command(ID_TRAY_SIGN_OUT);
    EXPECT_FALSE(ensure_session(nullptr, false));
    ASSERT_TRUE(ensure_session(nullptr, true));
    write_shared_user_info(nullptr, anna);
    SendMessageW(window(), icon_message, 0, WM_MOUSEMOVE);
    send_command(ID_TRAY_SIGN_OUT);
    EXPECT_TRUE(eventually([] { return read_shared_user_info(nullptr).user_id.empty(); }));
    // The tray, which goes on, keeps none of the session's objects.
    EXPECT_EQ(ask_to_exit(session_program), 0u);
    EXPECT_FALSE(ensure_session(nullptr, false));
    EXPECT_EQ(OpenFileMappingW(FILE_MAP_READ, FALSE, identity_mapping_name), nullptr);
    EXPECT_EQ(OpenMutexW(SYNCHRONIZE, FALSE, identity_mutex_name), nullptr);
}

TEST_F(tray, offers_sign_out_only_to_who_is_signed_in) {
    const companions::session_state session; // this process stands for the session process
    choose_sign_out();
    EXPECT_EQ(WaitForSingleObject(session.log_off_event(), 200), DWORD{WAIT_TIMEOUT});
    write_shared_user_info(nullptr, anna);
    choose_sign_out();
    EXPECT_EQ(WaitForSingleObject(session.log_off_event(), 20'000), WAIT_OBJECT_0);

    icon_event(WM_CONTEXTMENU);
    ASSERT_TRUE(shows(menu_class));
    EXPECT_EQ(ask_to_exit(tray_program), 0u);
    EXPECT_EQ(process_->wait(), 0u);
}

TEST_F(tray, says_once_that_the_drive_is_not_registered_and_can_exit_meanwhile) {
    PostMessageW(window(), WM_COMMAND, ID_TRAY_OPEN, 0);
    ASSERT_TRUE(shows(dialog_class));
    const HWND box = process_->window(dialog_class);
    send_command(ID_TRAY_OPEN);
    PostMessageW(box, WM_CLOSE, 0, 0);
    EXPECT_TRUE(shows(dialog_class, false));

    icon_event(WM_LBUTTONDBLCLK);
    ASSERT_TRUE(shows(dialog_class));
    EXPECT_EQ(ask_to_exit(tray_program), 0u);
    EXPECT_EQ(process_->wait(), 0u);
}

TEST_F(tray, shows_its_icon_whenever_a_taskbar_comes_and_tells_who_is_signed_in) {
    WNDCLASSW taskbar{};
    taskbar.lpfnWndProc = &taskbar_proc;
    taskbar.lpszClassName = L"Shell_TrayWnd";
    RegisterClassW(&taskbar);
    const HWND area = CreateWindowExW(0, taskbar.lpszClassName, nullptr, WS_POPUP, 0, 0, 0, 0,
                                      nullptr, nullptr, nullptr, nullptr);
    orders.clear();
    const UINT taskbar_created = RegisterWindowMessageW(L"TaskbarCreated");
    PostMessageW(HWND_BROADCAST, taskbar_created, 0, 0);
    std::vector<ULONG_PTR> expected{NIM_ADD, NIM_SETVERSION};
    EXPECT_TRUE(eventually([&] { return orders == expected; }));
    EXPECT_TRUE(last_tip_is(L"Quilldeck\nNobody is signed in"));

    const companions::session_state session;
    const std::wstring name = L"Zoë " + std::wstring(99, L'x'); // 103 of the 104 that have room
    write_shared_user_info(nullptr, {L"1", L"2", name + L"\U0001F58B", L"en", L"0"});
    for (const UINT message : {icon_message, icon_message, taskbar_created}) {
        SendMessageW(window(), message, 0, WM_MOUSEMOVE);
        EXPECT_TRUE(last_tip_is(L"Quilldeck\nSigned in as " + name));
    }
    EXPECT_EQ(ask_to_exit(tray_program), 0u);
    expected.insert(expected.end(), {NIM_MODIFY, NIM_ADD, NIM_MODIFY, NIM_SETVERSION, NIM_DELETE});
    EXPECT_EQ(orders, expected);
    DestroyWindow(area);
}

} // namespace

} // namespace companions_test
