#include "utils/thread.h"

#include <gtest/gtest.h>

#include <atomic>
#include <stdexcept>
#include <string>

namespace utils {

namespace {

TEST(pool_thread, is_over_when_its_owner_is) {
    std::atomic<int> ended = 0;
    const auto body = [&ended](const auto& failure) {
        return [&ended, failure] {
            Sleep(20);
            ++ended;
            throw failure;
        };
    };
    {
        pool_thread first(body(std::runtime_error("a failure that nobody asks for")));
        const pool_thread second(body(std::wstring(L"User cancel")));
        first.join();
        EXPECT_GE(ended, 1);
    }
    EXPECT_EQ(ended, 2);
}

} // namespace

} // namespace utils
