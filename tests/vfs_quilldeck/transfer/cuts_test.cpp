#include "line_cutter.h"
#include "store_test.h"

#include "vfs/exceptions.h"
#include "vfs_quilldeck/transfer/transfer_stream.h"
#include "vfs_quilldeck/wire/text_encoding.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <functional>
#include <random>
#include <span>
#include <string>
#include <thread>
#include <vector>

namespace transfer_test {

namespace {

using vfs_quilldeck::transfer_stream;

/// What --gtest_random_seed says, so that a run can be repeated, or a new one in its range.
std::uint32_t choose_seed() {
    const auto wanted = static_cast<std::uint32_t>(testing::GTEST_FLAG(random_seed));
    return wanted != 0 ? wanted : std::random_device{}() % 99'999 + 1;
}

class cuts_test : public store_test {
protected:
    static constexpr std::size_t workers = 4;

    explicit cuts_test(store_kind kind) : store_test(kind) {
        std::printf("--gtest_random_seed=%lu\n", static_cast<unsigned long>(seed_));
    }

    static std::uint32_t number_of(std::mt19937& random, std::uint32_t least,
                                   std::uint32_t greatest) {
        return std::uniform_int_distribution<std::uint32_t>(least, greatest)(random);
    }

    /// Runs `body` on several threads, each with random numbers of its own.
    void on_threads(const std::function<void(std::mt19937&)>& body) {
        std::vector<std::jthread> threads;
        for (std::size_t i = 0; i < workers; ++i) {
            threads.emplace_back([&body, seed = random()] {
                std::mt19937 own(seed);
                try {
                    body(own);
                } catch (const vfs::exception& failure) {
                    ADD_FAILURE() << testing::PrintToString(failure.get_name()) << ": "
                                  << testing::PrintToString(failure.get_description());
                }
            });
        }
    }

    /// Reads a file to its end over broken lines and compares.
    void download(vfs::file& file, const content& expected, std::mt19937& numbers) {
        content read;
        file.open(vfs::modeRead, 0);
        const auto outcome = read_all(file, read, random_steps(numbers, 200'000), 100);
        file.close(0);
        ASSERT_TRUE(outcome.complete);
        ASSERT_TRUE(read == expected) << "a resumed download differs";
        breaks += outcome.failures;
    }

    /// Writes to `location` until `wanted` calls have failed, and a little more, so that no break
    /// stays unseen in the buffers on the way. Then the server must hold exactly what was written.
    void upload(const std::string& location, std::span<const unsigned char> data,
                const step_source& step, int wanted) {
        transfer_stream stream(client->get_transfer_account());
        stream.open(location, transfer_stream::writing);
        const auto write = std::bind_front(&transfer_stream::write, &stream);
        std::size_t written = 0;
        const auto write_more = [&](std::size_t size, int most_failures) {
            const auto piece = data.subspan(written, std::min(size, data.size() - written));
            const auto outcome = write_all(write, piece, steps_of({size}), most_failures);
            EXPECT_TRUE(outcome.complete);
            written += piece.size();
            return outcome.failures;
        };
        int seen = 0;
        while (seen < wanted && written < data.size() && !HasFailure()) {
            seen += write_more(step(), wanted - seen);
        }
        ASSERT_EQ(seen, wanted);
        write_more(step() / 16 + 1, 0);
        stream.close();
        content held(std::filesystem::file_size(path_of(location)));
        std::ifstream(path_of(location), std::ios::binary)
            .read(reinterpret_cast<char*>(held.data()), std::ssize(held));
        ASSERT_TRUE(std::ranges::equal(held, data.first(written))) << "a resumed upload differs";
        breaks += seen;
    }

    /// Where the content of a listed file lies.
    std::string locate(const vfs::file& file) {
        const auto reply = client->operations_request(
            {{L"action", L"open_file_download"}, {L"file_id", file.get_id()}, {L"is_pro", L"0"}});
        return vfs_quilldeck::wide_to_utf8(reply.get_child_text(L"Location"));
    }

    /// Puts another content there, of another date.
    void replace(const std::string& location, const content& data) {
        std::ofstream(path_of(location), std::ios::binary)
            .write(reinterpret_cast<const char*>(data.data()), std::ssize(data));
        static int age = 0;
        const auto hours = std::chrono::hours(++age);
        std::filesystem::last_write_time(path_of(location),
                                         std::filesystem::file_time_type::clock::now() - hours);
    }

    const std::uint32_t seed_ = choose_seed();
    std::mt19937 random{seed_};
    /// That callers saw as failed calls.
    std::atomic<int> breaks = 0;
};

/// Short calls keep the server behind what the caller was told; in long ones it gets ahead, as
/// libcurl sends on while a call that fails in the end still waits.
step_source steps_for_upload(std::mt19937& random) {
    return random_steps(random, random() % 2 == 0 ? 20'000 : 2'000'000);
}

constexpr std::size_t download_size = 900'001;
/// More than what all buffers between a caller and a server's disk hold.
constexpr std::size_t upload_size = 30'000'000;

template <store_kind Kind>
class cuts_on : public cuts_test {
protected:
    cuts_on() : cuts_test(Kind) {}
};

using bundled_cuts_test = cuts_on<store_kind::bundled>;
using vsftpd_cuts_test = cuts_on<store_kind::vsftpd>;

} // namespace

TEST_F(bundled_cuts_test, downloads_go_on_where_the_line_broke) {
    const content data = make_content(download_size, random());
    store(L"source", data);
    // Each transfer meets the next fault: some break more than once, those beyond its end pass.
    for (int i = 0; i < 320; ++i) {
        control.fault({{"kind", "cut_download"},
                       {"bytes", std::to_string(number_of(random, 1, download_size))}});
    }
    on_threads([&](std::mt19937& numbers) {
        const file_ptr file = find(L"source");
        while (breaks < 200 && !HasFailure()) {
            download(*file, data, numbers);
        }
    });
    EXPECT_GE(breaks, 200);
}

TEST_F(bundled_cuts_test, uploads_go_on_where_the_server_stands) {
    const content data = make_content(upload_size, random());
    const file_ptr file = store(L"target", {});
    on_threads([&](std::mt19937& numbers) {
        support::store_control own_control(service_url);
        // The same location again and again: each upload starts it over.
        const std::string location = open_upload(*file);
        while (breaks < 200 && !HasFailure()) {
            const int wanted = numbers() % 4 == 0 ? 2 : 1;
            for (int i = 0; i < wanted; ++i) {
                const auto lost = numbers() % 2 == 0 ? 0 : number_of(numbers, 1, 1'000'000);
                own_control.fault({{"kind", "cut_upload"},
                                   {"path", location},
                                   {"bytes", std::to_string(number_of(numbers, 1, 1'500'000))},
                                   {"lose", std::to_string(lost)}});
            }
            upload(location, data, steps_for_upload(numbers), wanted);
        }
    });
    EXPECT_GE(breaks, 200);
}

TEST_F(vsftpd_cuts_test, transfers_go_on_over_lines_that_broke_on_our_side) {
    const content data = make_content(download_size, random());
    store(L"source", data);
    const file_ptr source = find(L"source");
    line_cutter cutter;
    while (breaks < 20 && !HasFailure()) {
        cutter.cut_after(number_of(random, 1, download_size));
        download(*source, data, random);
    }
    const content sent = make_content(upload_size, random());
    const std::string location = open_upload(*source);
    while (breaks < 40 && !HasFailure()) {
        cutter.cut_after(number_of(random, 1, 2'500'000));
        upload(location, sent, steps_for_upload(random), 1);
    }
}

// The store never puts another content where one is; other servers may.
TEST_F(vsftpd_cuts_test, a_resumed_download_never_joins_two_versions) {
    const content data = make_content(download_size, random());
    const std::string location = locate(*store(L"source", data));
    line_cutter cutter;
    constexpr std::size_t read_before = 100'001;
    for (const std::size_t size : {download_size, download_size + 1, read_before, std::size_t{9}}) {
        const content other = make_content(size, random());
        for (const bool delivered : {true, false}) {
            replace(location, data);
            transfer_stream stream(client->get_transfer_account());
            stream.open(location, transfer_stream::reading);
            content read(download_size + 9);
            const auto read_on = [&] {
                return stream.read(read.data(), static_cast<std::uint32_t>(read.size()));
            };
            if (delivered) {
                ASSERT_EQ(stream.read(read.data(), read_before), read_before);
            }
            cutter.cut_now();
            expect_failure(L"Read failed", broken_line, read_on);
            replace(location, other);
            for (int i = 0; delivered && i < 2; ++i) {
                expect_failure(L"Read failed",
                               L"The file was replaced in the store while it was being read",
                               read_on);
            }
            if (delivered) {
                stream.rewind();
            }
            read.resize(read_on());
            ASSERT_TRUE(read == other) << size;
        }
    }
}

} // namespace transfer_test
