#include "utils/rendezvous.h"
#include "utils/thread.h"

#include <gtest/gtest.h>

#include <atomic>
#include <memory>
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

TEST(rendezvous, hands_over_each_value_once) {
    constexpr int values = 20'000;
    rendezvous meeting;
    int offered = 0;
    for (int round = 0; round < 2; ++round) {
        meeting.reset();
        const pool_thread giver([&] {
            for (int value = 1; value <= values; ++value) {
                offered = value;
                meeting.give();
            }
            meeting.end();
        });
        int expected = 0;
        while (meeting.wait_ready()) {
            EXPECT_EQ(offered, ++expected);
            meeting.set_done();
        }
        EXPECT_EQ(expected, values);
        EXPECT_FALSE(meeting.wait_ready()) << "the end stays the end";
    }
}

} // namespace

} // namespace utils
