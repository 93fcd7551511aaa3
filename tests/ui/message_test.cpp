#include "driven_window.h"
#include "resources/string_ids.h"
#include "ui/message.h"
#include "ui/prompt.h"
#include "ui/strings.h"
#include "vfs/exceptions.h"

#include <gtest/gtest.h>
#include <wrl/client.h>

#include <shlobj.h>

#include <filesystem>
#include <functional>
#include <stdexcept>
#include <thread>

namespace ui {

namespace {

using Microsoft::WRL::ComPtr;

class remote_failure : public vfs::exception {
public:
    std::wstring get_name() const override { return L"Can’t – 言葉"; }

    std::wstring get_description() const override { return L"100 %s of it"; }
};

TEST(load_string, gives_texts_and_fills_them) {
    EXPECT_EQ(load_string(IDS_NEW_PROFILE_CREATED), L"Your account has been successfully created!");
    EXPECT_EQ(load_string(IDS_STREAM_OPEN_FAILED, {L"50 %s.txt", L"no %1% way"}),
              L"Can't open '50 %s.txt': no %1% way");
    EXPECT_EQ(load_string(IDS_STREAM_OPEN_FAILED, {L"one", L"two", L"three"}),
              L"Can't open 'one': two");
    EXPECT_THROW(load_string(IDS_STREAM_OPEN_FAILED, {L"one"}), std::exception);
    EXPECT_THROW(load_string(9), std::exception);
}

TEST(message, brings_each_family_of_failures_to_its_box) {
    const auto expect_box = [](const std::function<void()>& show, const wchar_t* caption,
                               const wchar_t* text, const wchar_t* icon, int button) {
        std::thread user(show);
        const HWND box = support::await_dialog(caption);
        EXPECT_EQ(support::message_of(box), text);
        EXPECT_EQ(support::icon_of(box), icon ? LoadIconW(nullptr, icon) : nullptr);
        EXPECT_TRUE(support::answer_box(box, button));
        user.join();
    };
    const auto failing = [](const auto& failure) {
        return [failure] {
            try {
                throw failure;
            } catch (...) {
                show_current_failure(nullptr, "Caption");
            }
        };
    };
    expect_box(failing(remote_failure()), L"Can’t – 言葉", L"100 %s of it", IDI_HAND, IDOK);
    expect_box(failing(std::runtime_error("where: what")), L"Caption", L"where: what", IDI_HAND,
               IDOK);
    expect_box(failing(std::filesystem::filesystem_error(
                   "cannot open", L"C:\\Zoë", make_error_code(std::errc::permission_denied))),
               L"Caption", L"filesystem error: cannot open: Permission denied [C:\\Zoë]", IDI_HAND,
               IDOK);
    expect_box(failing(7), L"Caption", L"Unknown error", IDI_HAND, IDOK);
    expect_box(
        [] {
            EXPECT_EQ(show_message(nullptr, IDS_STREAM_ERROR, IDS_STREAM_SEEK_FAILED, {L"a", L"b"},
                                   MB_RETRYCANCEL | MB_ICONQUESTION),
                      IDRETRY);
        },
        L"Error", L"Can't seek 'a': b", IDI_QUESTION, IDRETRY);
}

TEST(message, stands_on_a_progress_dialog) {
    ASSERT_EQ(CoInitialize(nullptr), S_OK);
    {
        ComPtr<IProgressDialog> progress;
        ASSERT_EQ(CoCreateInstance(CLSID_ProgressDialog, nullptr, CLSCTX_INPROC_SERVER,
                                   IID_IProgressDialog,
                                   reinterpret_cast<void**>(progress.GetAddressOf())),
                  S_OK);
        EXPECT_EQ(window_over(HWND_DESKTOP, progress.Get()), HWND_DESKTOP) << "not shown yet";
        progress->StartProgressDialog(nullptr, nullptr, PROGDLG_AUTOTIME, nullptr);
        HWND window = nullptr;
        ASSERT_TRUE(support::eventually([&] {
            window = window_over(nullptr, progress.Get());
            return window != nullptr;
        }));
        std::thread user([window] {
            const HWND box = support::await_dialog(L"caption");
            EXPECT_EQ(GetWindow(box, GW_OWNER), window);
            EXPECT_TRUE(support::answer_box(box, IDNO));
        });
        message_prompt prompt(nullptr, progress.Get());
        EXPECT_EQ(static_cast<ui::prompt&>(prompt).ask(L"caption", L"text", MB_YESNO), IDNO);
        user.join();
        progress->StopProgressDialog();
    }
    CoUninitialize();
}

} // namespace

} // namespace ui
