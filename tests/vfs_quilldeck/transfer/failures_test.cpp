#include "line_cutter.h"
#include "store_test.h"

#include "eventually.h"
#include "process_census.h"

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <random>
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
    control.reset();
    for (int i = 0; i < 2; ++i) {
        expect_failure(L"Close failed", broken_line, [&] { file->close(0); });
    }
    file->abandon();
    EXPECT_TRUE(control.log().empty()) << "nobody asked for a broken upload";
    EXPECT_TRUE(fetch(L"file") == data) << "a refused upload changed the file";
    EXPECT_EQ(file->get_size(), std::ssize(data));
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
    expect_failure(L"Close failed", broken_line, [&] { file->close(0); });
    // In any steps, also after a close that told of it.
    EXPECT_EQ(file->write(data.data(), 7 * mebibyte), 7 * mebibyte);
    expect_failure(L"Write failed", broken_line, [&] { file->write(other.data(), 100); });
    EXPECT_EQ(file->write(data.data() + 7 * mebibyte, 13 * mebibyte), 13 * mebibyte);
    file->close(0);
    EXPECT_TRUE(fetch(L"file") == data);
}

// All bytes of a small file go at its end.
TEST_F(failures_test, an_upload_that_breaks_at_its_end_is_saved_by_closing_again) {
    std::mt19937 random(11);
    int again = 0;
    for (int i = 0; i < 40; ++i) {
        const std::size_t size = 1 + random() % (i % 2 == 0 ? 40'000 : 3'000'000);
        const content data = make_content(size, random());
        cut_upload(1 + random() % size, i % 3 == 0 ? random() % size : 0);
        if (i % 4 == 0) {
            control.fault({{"kind", "drop"},
                           {"when", i % 8 == 0 ? "after" : "before"},
                           {"action", "close_file_upload"},
                           {"count", "4"}});
        }
        const file_ptr file = create(L"file " + std::to_wstring(i), size);
        ASSERT_TRUE(write_all(*file, data, steps_of({16'384}), 3).complete);
        bool closed = false;
        for (int tries = 0; !closed && tries < 5; ++tries) {
            try {
                file->close(1'000'000);
                closed = true;
            } catch (const vfs::exception& failure) {
                EXPECT_EQ(failure.get_description(), broken_line);
                ++again;
            }
        }
        ASSERT_TRUE(closed) << size;
        ASSERT_TRUE(fetch(L"file " + std::to_wstring(i)) == data) << size;
    }
    EXPECT_GT(again, 10);
}

// The store has taken the file, and the line breaks before it can say so; or other bytes are gone.
TEST_F(failures_test, a_close_whose_answer_was_lost_is_no_failure_when_repeated) {
    const content data = make_content(100'000, 12);
    const file_ptr file = create(L"file", data.size());
    ASSERT_TRUE(write_all(*file, data, steps_of({16'384})).complete);
    control.fault(
        {{"kind", "drop"}, {"when", "after"}, {"action", "close_file_upload"}, {"count", "4"}});
    expect_failure(L"Request failed", broken_line, [&] { file->close(0); });
    EXPECT_TRUE(fetch(L"file") == data) << "stored, as it happens";
    file->close(0);
    EXPECT_EQ(file->get_open_mode(), 0);
    EXPECT_EQ(file->get_size(), std::ssize(data));

    // What a server took and lost again is found out too.
    file->open(overwrite, 0);
    ASSERT_TRUE(write_all(*file, data, steps_of({16'384})).complete);
    control.fault({{"kind", "drop"}, {"action", "close_file_upload"}, {"count", "4"}});
    expect_failure(L"Request failed", broken_line, [&] { file->close(0); });
    const std::string place = control.log().back().value_of("temp_location");
    std::filesystem::resize_file(path_of("/" + place.substr(place.size() - 33)), 60'000);
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
