#include "line_cutter.h"
#include "store_test.h"

#include "eventually.h"
#include "process_census.h"

#include <cstddef>
#include <cstdint>
#include <string>

namespace transfer_test {

namespace {

constexpr std::int32_t overwrite = vfs::modeWrite | vfs::modeOverwrite;
constexpr std::size_t mebibyte = std::size_t{1} << 20;

class failures_test : public store_test {
protected:
    /// Breaks the upload that begins next.
    void cut_upload(std::size_t bytes, std::size_t lost = 0) {
        control.fault({{"kind", "cut_upload"},
                       {"bytes", std::to_string(bytes)},
                       {"lose", std::to_string(lost)}});
    }
};

} // namespace

TEST_F(failures_test, a_line_that_breaks_between_two_calls_loses_nothing) {
    const content data = make_content(4 * mebibyte + 1, 1);
    line_cutter cutter;
    const file_ptr file = create(L"file", data.size());
    const std::span sent(data);
    ASSERT_TRUE(write_all(*file, sent.first(700'001), steps_of({10'001})).complete);
    cutter.cut_now();
    EXPECT_EQ(write_all(*file, sent.subspan(700'001), steps_of({10'001}), 1).failures, 1);
    file->close(0);

    const file_ptr listed = find(L"file");
    listed->open(vfs::modeRead, 0);
    content read(700'001);
    ASSERT_EQ(listed->read(read.data(), 700'001), 700'001U);
    cutter.cut_now();
    EXPECT_EQ(read_all(*listed, read, steps_of({10'001}), 1).failures, 1);
    listed->close(0);
    EXPECT_TRUE(read == data);
}

TEST_F(failures_test, an_upload_goes_on_as_far_back_as_its_history_reaches) {
    const content data = make_content(36 * mebibyte, 2);
    const file_ptr file = store(L"file", content{'o', 'l', 'd'});
    cut_upload(22 * mebibyte, 8 * mebibyte);
    file->open(overwrite, 0);
    EXPECT_EQ(write_all(*file, data, steps_of({200'000}), 1).failures, 1);
    file->close(0);
    ASSERT_TRUE(fetch(L"file") == data);

    cut_upload(22 * mebibyte, 21 * mebibyte);
    file->open(overwrite, 0);
    const auto lost = write_all(*file, data, steps_of({200'000}), 3);
    EXPECT_FALSE(lost.complete);
    EXPECT_EQ(lost.failures, 4);
    EXPECT_THROW(file->close(0), vfs::exception);
    EXPECT_TRUE(fetch(L"file") == data) << "a refused upload changed the file";
}

TEST_F(failures_test, bytes_that_the_server_holds_already_must_be_repeated) {
    const content data = make_content(20 * mebibyte, 3);
    const content other = make_content(20 * mebibyte, 4);
    const file_ptr file = store(L"file", content{'o', 'l', 'd'});
    cut_upload(2 * mebibyte + 1);
    file->open(overwrite, 0);
    // One call that the server has seen a part of when it fails.
    expect_failure(L"Write failed", broken_line, [&] { file->write(data.data(), 20 * mebibyte); });
    EXPECT_EQ(file->get_pos(), 0);
    expect_failure(L"Write failed", broken_line, [&] { file->write(other.data(), 20 * mebibyte); });
    EXPECT_EQ(file->write(data.data(), 20 * mebibyte), 20 * mebibyte);
    file->close(0);
    EXPECT_TRUE(fetch(L"file") == data);
}

TEST_F(failures_test, a_server_that_pauses_or_drops_its_session_costs_no_byte) {
    const content data = make_content(13 * mebibyte, 6);
    const auto strike = [this](const std::string& kind) {
        control.fault({{"kind", kind}, {"bytes", "50000"}, {"seconds", "1"}});
    };
    for (const std::string kind : {"stall", "cut_control"}) {
        const int breaks = kind == "stall" ? 0 : 1;
        const auto name = std::wstring(kind.begin(), kind.end());
        strike(kind);
        const file_ptr file = create(name, data.size());
        EXPECT_TRUE(write_all(*file, data, steps_of({16'384}), breaks).complete);
        file->close(0);
        strike(kind);
        content read;
        const file_ptr listed = find(name);
        listed->open(vfs::modeRead, 0);
        EXPECT_EQ(read_all(*listed, read, steps_of({16'384}), breaks).failures, breaks);
        listed->close(0);
        EXPECT_TRUE(read == data);
    }
}

// They go amid all that a stream can be in the middle of.
TEST_F(failures_test, files_that_go_away_leave_no_handle_or_thread) {
    store(L"source", make_content(5 * mebibyte, 7));
    store(L"target", {});
    content buffer(1'000'000);
    const auto open = [this](const std::wstring& name, std::int32_t mode) {
        file_ptr file = find(name);
        file->open(mode, 0);
        return file;
    };
    const auto leave_files = [&] {
        const file_ptr unused = open(L"source", vfs::modeRead);
        unused->close(0);
        const file_ptr reading = open(L"source", vfs::modeRead);
        ASSERT_EQ(reading->read(buffer.data(), 100), 100U);
        const file_ptr finished = open(L"source", vfs::modeRead);
        content all;
        ASSERT_TRUE(read_all(*finished, all, steps_of({100'000})).complete);
        const file_ptr writing = open(L"target", overwrite);
        ASSERT_EQ(writing->write(buffer.data(), 100), 100U);

        control.fault({{"kind", "cut_download"}, {"bytes", "1000"}});
        const file_ptr broken = open(L"source", vfs::modeRead);
        expect_failure(L"Read failed", broken_line,
                       [&] { broken->read(buffer.data(), 1'000'000); });
        control.fault({{"kind", "cut_download"}, {"bytes", "0"}});
        expect_failure(L"Open failed", broken_line, [&] { open(L"source", vfs::modeRead); });
        cut_upload(1'000, 500);
        const file_ptr resumed = open(L"target", overwrite);
        EXPECT_TRUE(
            write_all(*resumed, make_content(6 * mebibyte, 1), steps_of({99'999}), 1).complete);
        // The folder's last listing holds its files too.
        folder->get_items();
    };
    leave_files();
    leave_files();
    const auto before = support::count_process();
    constexpr std::size_t rounds = 6;
    for (std::size_t round = 0; round < rounds && !HasFailure(); ++round) {
        leave_files();
    }
    // Threads of libcurl's resolver end a little later.
    EXPECT_TRUE(
        support::eventually([&] { return support::count_process().threads <= before.threads; }));
    // Pooled handles may have a connection more or less; a leak would show in each round.
    EXPECT_LT(support::count_process().handles, before.handles + rounds);
}

} // namespace transfer_test
