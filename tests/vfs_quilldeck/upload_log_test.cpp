#include "upload_simulation.h"

#include <gtest/gtest.h>

#include <random>

namespace vfs_quilldeck {

namespace {

TEST(upload_log, gives_a_server_exactly_what_was_written_however_the_line_breaks) {
    for (unsigned seed = 0; seed < 24; ++seed) {
        std::mt19937 random(seed);
        upload_simulation simulation([&random](std::uint32_t bound) { return random() % bound; });
        ASSERT_NO_THROW({
            for (int i = 0; i < 150; ++i) {
                simulation.step();
            }
            simulation.finish();
        }) << "seed "
           << seed;
    }
}

TEST(upload_log, keeps_its_whole_history_and_no_more) {
    upload_log log;
    const std::vector<unsigned char> piece(1U << 20U, 0x5A);
    constexpr std::int64_t pieces = 40;
    for (std::int64_t i = 0; i < pieces; ++i) {
        ASSERT_EQ(log.offer(piece), 0u);
        log.accept(piece.size());
        log.confirm(log.accepted());
    }
    constexpr std::int64_t kept_from = (pieces << 20) - upload_log::history_limit;
    EXPECT_FALSE(log.resume_at(kept_from - 65'536 - 1));
    EXPECT_FALSE(log.resume_at((pieces << 20) + 1));
    EXPECT_EQ(log.confirmed(), pieces << 20);
    EXPECT_TRUE(log.resume_at(kept_from));
    EXPECT_EQ(log.confirmed(), kept_from);
    EXPECT_FALSE(log.replay_from(kept_from).empty());
}

} // namespace

} // namespace vfs_quilldeck
