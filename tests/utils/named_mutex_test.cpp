#include "failures.h"
#include "second_process.h"
#include "unclosable_handle.h"
#include "utils/exceptions.h"
#include "utils/named_mutex.h"

#include <gtest/gtest.h>

#include <future>
#include <memory>

namespace utils {

namespace {

const std::wstring name = L"Local\\utils_test \u00E4";

using support::expect_failure;

TEST(named_mutex, excludes_another_process_until_it_lets_go_or_dies) {
    for (const bool dies : {false, true}) {
        const support::second_process other;
        ASSERT_EQ(other.ask("lock"), "ok");
        auto waiting = std::async(std::launch::async, [] {
            named_mutex mutex(name);
            const mutex_hold hold(mutex);
        });
        EXPECT_EQ(waiting.wait_for(std::chrono::milliseconds(100)), std::future_status::timeout);
        if (dies) {
            other.kill();
        } else {
            EXPECT_EQ(other.ask("unlock"), "ok");
        }
        waiting.get();
    }
}

TEST(named_mutex, tells_what_cannot_be_done) {
    named_mutex mutex(name);
    {
        const mutex_hold outer(mutex);
        const mutex_hold inner(mutex);
        mutex.unlock();
        mutex.unlock();
        expect_failure<system_error_exception>(
            [&] { mutex.unlock(); }, "named_mutex::unlock()",
            ": ::ReleaseMutex(m_win_mutex) call returned error: ");
    } // those who hold it end nevertheless
    const unique_handle event(CreateEventW(nullptr, FALSE, FALSE, L"Local\\utils_test event"));
    expect_failure<system_error_exception>(
        [] { named_mutex of_event(L"Local\\utils_test event"); }, "named_mutex(",
        ": ::CreateMutexW(NULL, FALSE, name) call returned error: ");
    expect_failure<system_error_exception>(
        [] {
            const support::unclosable_handle handle;
            const named_mutex stuck(name);
            EXPECT_TRUE(handle.protect());
        },
        "~named_mutex(", ": ::CloseHandle(m_win_mutex) call returned error: ");
}

} // namespace

} // namespace utils

int main(int argc, char** argv) {
    auto mutex = std::make_unique<utils::named_mutex>(utils::name);
    support::serve_if_second(argc, argv, [&mutex](const std::string& line) {
        line == "lock" ? mutex->lock() : mutex->unlock();
        return "ok";
    });
    mutex.reset();
    testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
