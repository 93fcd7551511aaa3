#include "driven_window.h"
#include "resources/dialog_ids.h"
#include "ui/background_work.h"
#include "ui/dialog.h"
#include "utils/unique_handle.h"

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <stdexcept>
#include <string>
#include <thread>

namespace ui {

namespace {

constexpr auto title = L"Quilldeck login";

/// A dialog whose OK works for long, in the shape of that for signing in.
class worker_dialog : public dialog {
public:
    explicit worker_dialog(std::function<void()> work)
        : dialog(IDD_LOGIN), work_(std::move(work)) {}

    std::string outcome;
    int commands = 0;

protected:
    bool on_command(int id, int) override {
        ++commands;
        if (id == IDOK) {
            try {
                outcome += run_waiting(control(IDC_LOGIN_USERNAME), work_) ? "done " : "left ";
            } catch (const std::runtime_error& failure) {
                outcome += failure.what();
            }
            end(IDOK);
        } else if (id == IDCANCEL) {
            outcome += "cancelled";
            end(IDCANCEL);
        }
        return true;
    }

private:
    std::function<void()> work_;
};

TEST(run_waiting, keeps_a_dialog_alive_while_it_works_for_it) {
    enum class user { waits, cancels, closes, ends_the_program };

    struct {
        user does;
        const char* throws;
        const char* outcome;
    } const cases[] = {
        {user::waits, nullptr, "done "},
        {user::waits, "refused", "refused"},
        {user::cancels, nullptr, "left "},
        {user::closes, "refused", "left "},
        {user::ends_the_program, nullptr, "left "},
    };

    for (const auto& each : cases) {
        SCOPED_TRACE(each.outcome);
        const utils::unique_handle go(CreateEventW(nullptr, TRUE, FALSE, nullptr));
        const auto held = std::make_shared<int>();
        worker_dialog dialog([&go, held, text = each.throws] {
            WaitForSingleObject(go.get(), INFINITE);
            if (text) {
                throw std::runtime_error(text);
            }
        });
        std::thread host([&] { dialog.do_modal(nullptr); });
        const HWND window = support::await_dialog(title);
        const HWND field = GetDlgItem(window, IDC_LOGIN_USERNAME);
        support::press(window, IDOK);
        EXPECT_TRUE(support::eventually([&] { return !IsWindowEnabled(field); }));
        const int commands = dialog.commands;
        SendMessageW(window, WM_COMMAND, IDOK, 0);
        EXPECT_EQ(dialog.commands, commands) << "what is disabled is not used by its number either";
        support::type(window, IDC_LOGIN_USERNAME, L"answered");
        EXPECT_EQ(support::text_of(field), L"answered") << "messages go on";
        switch (each.does) {
        case user::waits:
            SetEvent(go.get());
            break;
        case user::cancels:
            SendMessageW(window, WM_COMMAND, IDCANCEL, 0);
            break;
        case user::closes:
            SendMessageW(window, WM_SYSCOMMAND, SC_CLOSE, 0);
            break;
        case user::ends_the_program:
            PostThreadMessageW(GetWindowThreadProcessId(window, nullptr), WM_QUIT, 3, 0);
            break;
        }
        // It comes here without the work, which stands still, where the user did not wait.
        host.join();
        EXPECT_EQ(dialog.outcome, each.outcome);
        SetEvent(go.get());
        EXPECT_TRUE(support::eventually([&] { return held.use_count() == 2; }))
            << "the thread lets go of what it owns";
    }
}

} // namespace

} // namespace ui
