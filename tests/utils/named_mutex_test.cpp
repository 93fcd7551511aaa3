#include "second_process.h"
#include "utils/exceptions.h"
#include "utils/named_mutex.h"

#include <gtest/gtest.h>

#include <atomic>
#include <memory>
#include <thread>

namespace utils {

namespace {

const std::wstring name = L"Local\\utils_test \u00E4";

std::string failure_of(const std::function<void()>& operation) {
    try {
        operation();
    } catch (const system_error_exception& failure) {
        return failure.what();
    }
    return "none";
}

TEST(named_mutex, excludes_another_process_until_it_lets_go) {
    const support::second_process other;
    ASSERT_EQ(other.ask("lock"), "ok");
    std::atomic<bool> locked = false;
    std::thread waiting([&locked] {
        named_mutex mutex(name);
        const std::lock_guard guard(mutex);
        locked = true;
    });
    Sleep(100);
    EXPECT_FALSE(locked);
    EXPECT_EQ(other.ask("unlock"), "ok");
    waiting.join();
    EXPECT_EQ(other.ask("lock"), "ok");
}

TEST(named_mutex, is_free_again_when_its_owner_has_died) {
    const support::second_process other;
    ASSERT_EQ(other.ask("lock"), "ok");
    named_mutex mutex(name);
    other.kill();
    mutex.lock();
    mutex.lock();
    mutex.unlock();
    mutex.unlock();
    const std::string text = failure_of([&mutex] { mutex.unlock(); });
    EXPECT_NE(text.find("named_mutex::unlock()"), std::string::npos) << text;
    EXPECT_NE(text.find(": ::ReleaseMutex(m_win_mutex) call returned error: "), std::string::npos)
        << text;
}

TEST(named_mutex, tells_that_the_name_is_of_something_else) {
    const unique_handle event(CreateEventW(nullptr, FALSE, FALSE, L"Local\\utils_test event"));
    const std::string text = failure_of([] { named_mutex mutex(L"Local\\utils_test event"); });
    EXPECT_NE(text.find(": ::CreateMutexW(NULL, FALSE, name) call returned error: "),
              std::string::npos)
        << text;
    EXPECT_NE(text.find("named_mutex("), std::string::npos) << text;
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
