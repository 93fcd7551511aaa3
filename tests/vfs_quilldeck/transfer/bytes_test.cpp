#include "store_test.h"

#include "vfs_quilldeck/wire/curl_descriptor_cache.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <thread>
#include <vector>

namespace transfer_test {

namespace {

class bytes_test : public any_store_test {
protected:
    /// Uploads and downloads `data` through one file object, in the given steps.
    void round_trip(const std::wstring& name, const content& data, const step_source& step) {
        const file_ptr file = create(name, data.size());
        ASSERT_TRUE(write_all(*file, data, step).complete);
        EXPECT_EQ(file->get_pos(), std::ssize(data));
        file->close(1'000'000);
        EXPECT_EQ(file->get_size(), std::ssize(data));

        const file_ptr listed = find(name);
        EXPECT_EQ(listed->get_size(), std::ssize(data));
        EXPECT_EQ(listed->get_modification_date(), 1'000'000);
        listed->open(vfs::modeRead, 0);
        content read;
        ASSERT_TRUE(read_all(*listed, read, step).complete);
        EXPECT_EQ(listed->get_pos(), std::ssize(data));
        EXPECT_TRUE(listed->is_eof());
        listed->close(0);
        ASSERT_TRUE(read == data) << data.size() << " bytes differ";
    }
};

} // namespace

// The sizes lie at the edges of the 16,384 bytes in which the system copies, the steps beside those
// and beside libcurl's buffers.
TEST_P(bytes_test, files_of_all_sizes_pass_both_ways_in_odd_steps) {
    const std::vector<std::vector<std::size_t>> walks = {
        {16'384}, {1, 16'383, 2, 16'385, 7, 65'537}, {524'287, 3, 524'288, 524'289, 11, 1'048'577}};
    int number = 0;
    for (const std::size_t size : {0U, 1U, 16'383U, 16'384U, 16'385U, 5'000'001U}) {
        const content data = make_content(size, size + 1);
        for (const auto& walk : walks) {
            round_trip(L"file " + std::to_wstring(++number), data, steps_of(walk));
        }
    }
}

TEST_P(bytes_test, eight_streams_at_once_keep_their_bytes_apart) {
    constexpr std::size_t streams = 8;
    for (std::size_t round = 0; round < 2; ++round) {
        std::vector<std::jthread> threads;
        for (std::size_t stream = 0; stream < streams; ++stream) {
            threads.emplace_back([this, number = round * streams + stream] {
                round_trip(L"stream " + std::to_wstring(number),
                           make_content(1'234'567 + number, number), steps_of({16'384, 1'001}));
            });
        }
    }
    // The handles of the first round served the second one too.
    EXPECT_LE(vfs_quilldeck::transfer_descriptor_cache.get_usage().entries, streams);
}

TEST_P(bytes_test, small_files_follow_each_other_on_one_handle_and_one_login) {
    const bool counted = GetParam() == store_kind::bundled;
    round_trip(L"first", make_content(100, 1), steps_of({33}));
    control.reset();
    const auto before = vfs_quilldeck::transfer_descriptor_cache.get_usage();
    const std::size_t files = counted ? 200 : 40;
    for (std::size_t i = 0; i < files; ++i) {
        store(std::to_wstring(i), make_content(4'000 + i, i));
    }
    std::size_t equal = 0;
    for (const vfs::item_ptr& item : folder->get_items()) {
        const auto file = std::dynamic_pointer_cast<vfs::file>(item);
        if (file->get_name() == L"first") {
            continue;
        }
        content read;
        file->open(vfs::modeRead, 0);
        ASSERT_TRUE(read_all(*file, read, steps_of({16'384})).complete);
        file->close(0);
        const std::size_t i = std::stoul(file->get_name());
        equal += read == make_content(4'000 + i, i) ? 1U : 0U;
    }
    EXPECT_EQ(equal, files);
    EXPECT_EQ(vfs_quilldeck::transfer_descriptor_cache.get_usage().entries, before.entries);
    if (counted) {
        auto counters = control.stats();
        EXPECT_EQ(counters["ftp_logins"], 0);
        EXPECT_EQ(counters["https_connections"], 1);
        EXPECT_EQ(counters["ftp_data_connections"], static_cast<std::int64_t>(2 * files));
    }
}

INSTANTIATE_TEST_SUITE_P(stores, bytes_test,
                         testing::Values(store_kind::bundled, store_kind::vsftpd), name_of_store);

} // namespace transfer_test
