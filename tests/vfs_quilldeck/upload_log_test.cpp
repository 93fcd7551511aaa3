#include "vfs_quilldeck/upload_log.h"

#include <gtest/gtest.h>

#include <vector>

namespace vfs_quilldeck {

namespace {

// That a server gets exactly what was written, however the line breaks, fuzz/upload_log tells.
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
