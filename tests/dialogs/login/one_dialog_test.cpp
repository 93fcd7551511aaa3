#include "dialogs/login/sign_in.h"
#include "login_fixture.h"
#include "resources/dialog_ids.h"
#include "second_process.h"
#include "vfs_quilldeck/session/session_objects.h"

#include <mutex>
#include <set>

namespace dialogs {

namespace {

constexpr auto ready_semaphore_name = L"Local\\dialogs_test_ready";

/// What the second process does with a line: it needs the store.
std::string answer_line(const std::string&) {
    utils::named_mutex mutex(vfs_quilldeck::login_mutex_name);
    const utils::unique_handle ready(
        OpenSemaphoreW(SEMAPHORE_MODIFY_STATE, FALSE, ready_semaphore_name));
    ReleaseSemaphore(ready.get(), 1, nullptr);
    return ensure_logged_in(mutex, nullptr) ? "signed in" : "cancelled";
}

/// Two processes that need the store at the same time. One that shows a dialog of its own does not
/// answer until somebody closes it.
class one_dialog : public login_test {
protected:
    one_dialog() {
        utils::named_mutex mutex(vfs_quilldeck::login_mutex_name);
        const std::lock_guard guard(mutex);
        for (std::size_t i = 0; i < 2; ++i) {
            answers_[i] = std::async(std::launch::async, [this, i] {
                try {
                    return processes_[i].ask("sign in");
                } catch (const std::exception&) {
                    return std::string("ended");
                }
            });
            WaitForSingleObject(ready_.get(), INFINITE);
        }
        // Both are at the mutex now, or past it if it does not hold them.
    }

    /// The answers in alphabetical order.
    std::string answers() {
        std::set<std::string> answers;
        for (std::size_t i = 0; i < 2; ++i) {
            if (answers_[i].wait_for(std::chrono::seconds(20)) != std::future_status::ready) {
                processes_[i].kill();
            }
            answers.insert(answers_[i].get());
        }
        return *answers.begin() + ", " + *answers.rbegin();
    }

private:
    utils::unique_handle ready_{CreateSemaphoreW(nullptr, 0, 2, ready_semaphore_name)};
    support::second_process processes_[2];
    std::future<std::string> answers_[2];
};

TEST_F(one_dialog, serves_two_processes) {
    const HWND dialog = support::await_dialog(login_title);
    support::type(dialog, IDC_LOGIN_USERNAME, L"demo");
    support::type(dialog, IDC_LOGIN_PASSWORD, L"demo");
    support::press(dialog, IDOK);
    EXPECT_EQ(answers(), "signed in, signed in");
}

TEST_F(one_dialog, comes_up_in_the_other_process_when_the_first_dies) {
    const HWND first = support::await_dialog(login_title);
    DWORD owner = 0;
    GetWindowThreadProcessId(first, &owner);
    const utils::unique_handle process(OpenProcess(PROCESS_TERMINATE, FALSE, owner));
    TerminateProcess(process.get(), 1);
    EXPECT_TRUE(support::eventually([&] { return !IsWindow(first); }));
    PostMessageW(support::await_dialog(login_title), WM_COMMAND, IDCANCEL, 0);
    EXPECT_EQ(answers(), "cancelled, ended");
}

} // namespace

} // namespace dialogs

int main(int argc, char** argv) {
    support::serve_if_second(argc, argv, &dialogs::answer_line);
    testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
