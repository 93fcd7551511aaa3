#include "failing_memory.h"
#include "store_test.h"

#include "vfs_quilldeck/transfer/transfer_options.h"
#include "vfs_quilldeck/transfer/transfer_stream.h"
#include "vfs_quilldeck/wire/curl_descriptor_cache.h"
#include "vfs_quilldeck/wire/text_encoding.h"

#include <array>
#include <chrono>
#include <fstream>
#include <memory>
#include <new>
#include <string>
#include <thread>
#include <vector>

namespace transfer_test {

namespace {

using vfs_quilldeck::transfer_stream;

constexpr std::int32_t overwrite = vfs::modeWrite | vfs::modeOverwrite;

class states_test : public store_test {
protected:
    std::int64_t data_connections() { return control.stats()["ftp_data_connections"]; }

    std::array<char, 100> buffer{};
};

/// Does `work` with memory that ends after the first allocation, after the second, and so on until
/// it succeeds; `check` looks at what each of the failures has left.
template <class Work, class Check>
void fail_each_allocation(const Work& work, const Check& check) {
    for (int allowed = 0;; ++allowed) {
        ASSERT_LT(allowed, 10'000);
        try {
            const support::failing_memory memory(allowed);
            work();
            return;
        } catch (const std::bad_alloc&) {
            check();
        } catch (const vfs::exception&) {
            check();
        }
    }
}

} // namespace

TEST_F(states_test, memory_that_runs_out_leaves_no_half_open_file) {
    const content data = make_content(100'000, 8);
    const file_ptr file = store(L"file", data);
    for (const std::int32_t mode : {vfs::modeRead + 0, overwrite}) {
        fail_each_allocation([&] { file->open(mode, 0); },
                             [&] { EXPECT_EQ(file->get_open_mode(), 0); });
        ASSERT_EQ(file->get_open_mode(), mode);
        file->abandon();
    }
    const std::string location = open_upload(*file);
    const auto& account = *client->get_transfer_account();
    fail_each_allocation(
        [&] { vfs_quilldeck::find_stored_size(account, location, {}); },
        [&] { EXPECT_EQ(vfs_quilldeck::transfer_descriptor_cache.get_usage().locked, 0U); });
    // A handle that asked for a size alone is the next download's.
    EXPECT_TRUE(fetch(L"file") == data);
}

TEST_F(states_test, a_size_that_never_rests_is_not_waited_for) {
    const std::string location = open_upload(*store(L"file", {}));
    const std::jthread server([path = path_of(location)](const std::stop_token& ended) {
        while (!ended.stop_requested()) {
            std::ofstream(path, std::ios::app) << 'x' << std::flush;
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        }
    });
    expect_failure(L"Transfer failed",
                   L"The server goes on changing a file that nothing is sent to", [&] {
                       vfs_quilldeck::find_stored_size(*client->get_transfer_account(), location,
                                                       {.rest = std::chrono::seconds(20),
                                                        .most = 1'000'000'000,
                                                        .limit = std::chrono::milliseconds(300)});
                   });
}

TEST_F(states_test, opening_refuses_what_a_remote_file_does_not_offer) {
    store(L"file", make_content(100'000, 1));
    const file_ptr file = find(L"file");
    control.reset();
    for (const std::int32_t mode : {3, 7, 2, 4, 5}) {
        expect_failure(L"Open failed", L"Invalid open mode", [&] { file->open(mode, 0); });
        EXPECT_EQ(file->get_open_mode(), 0);
    }
    for (const auto& request : control.log()) {
        EXPECT_EQ(request.value_of("action"), "open_file_download");
    }

    transfer_stream stream(client->get_transfer_account());
    for (const int mode : {transfer_stream::reading, transfer_stream::writing}) {
        expect_failure(L"Open failed", broken_line, [&] { stream.open("/f00", mode); });
        EXPECT_EQ(stream.get_mode(), transfer_stream::closed);
    }
}

// libcurl guesses a scheme by the name. Whatever it guesses, only the data channel reads ahead: the
// control channel would leave a reply in its buffer and wait for it.
TEST_F(states_test, a_host_may_have_no_scheme) {
    const content data = make_content(1'000'000, 7);
    store(L"file", data);
    auto account = *client->get_transfer_account();
    const std::size_t port = account.host.rfind(':');
    account.host = "ftp.localhost" + account.host.substr(port);
    const auto reply = client->operations_request({{L"action", L"open_file_download"},
                                                   {L"file_id", find(L"file")->get_id()},
                                                   {L"is_pro", L"0"}});
    transfer_stream stream(std::make_shared<vfs_quilldeck::transfer_account>(account));
    for (int i = 0; i < 2; ++i) {
        stream.open(vfs_quilldeck::wide_to_utf8(reply.get_child_text(L"Location")),
                    transfer_stream::reading);
        content read(1'000'001);
        EXPECT_EQ(stream.read(read.data(), 1'000'001), 1'000'000U);
        stream.close();
        read.pop_back();
        EXPECT_TRUE(read == data);
    }
}

TEST_F(states_test, calls_in_the_wrong_state_fail_with_their_texts) {
    store(L"file", make_content(100'000, 1));
    const file_ptr file = find(L"file");
    for (int i = 0; i < 2; ++i) {
        expect_failure(L"Read failed", L"File not opened", [&] { file->read(buffer.data(), 1); });
        expect_failure(L"Write failed", L"File not opened", [&] { file->write(buffer.data(), 1); });
        expect_failure(L"Read failed", L"buffer is NULL", [&] { file->read(nullptr, 1); });
        expect_failure(L"Write failed", L"buffer is NULL", [&] { file->write(nullptr, 1); });
        expect_failure(L"Close failed", L"File is not opened", [&] { file->close(0); });
        file->open(vfs::modeRead, 0);
        expect_failure(L"Open failed", L"File already opened",
                       [&] { file->open(vfs::modeRead, 0); });
        expect_failure(L"Write failed", L"Incorrect file mode",
                       [&] { file->write(buffer.data(), 1); });
        EXPECT_EQ(file->read(buffer.data(), 100), 100U);
        file->close(0);
    }
    file->open(overwrite, 1);
    expect_failure(L"Read failed", L"Incorrect file mode", [&] { file->read(buffer.data(), 1); });
    EXPECT_EQ(file->write(buffer.data(), 100), 100U);
    file->close(0);
    EXPECT_EQ(fetch(L"file").size(), 100U);
    expect_failure(L"Internal error",
                   L"Wrong file open mode: only modeWrite|modeOverwrite is supported",
                   [&] { folder->create_and_open_file(L"other", vfs::modeRead, 0); });
}

TEST_F(states_test, an_item_serves_readers_and_a_writer_at_once) {
    const content old = make_content(3'000'000, 5);
    const content fresh = make_content(2'000'001, 6);
    store(L"file", old);
    const file_ptr item = find(L"file");
    const file_ptr reading = item->duplicate();
    const file_ptr writing = item->duplicate();
    const file_ptr late = writing->duplicate();
    reading->open(vfs::modeRead, 0);
    writing->open(overwrite, 0);
    late->open(vfs::modeRead, 0);
    control.reset();
    for (const std::int32_t mode : {vfs::modeRead + 0, overwrite, 3}) {
        expect_failure(L"Open failed", L"File already opened", [&] { writing->open(mode, 0); });
    }
    EXPECT_TRUE(control.log().empty()) << "refused without a question";
    content first;
    content second;
    {
        const std::jthread reader(
            [&] { EXPECT_TRUE(read_all(*reading, first, steps_of({9'999})).complete); });
        EXPECT_TRUE(write_all(*writing, fresh, steps_of({7'777})).complete);
        writing->close(1'000'000);
    }
    EXPECT_TRUE(read_all(*late, second, steps_of({100'000})).complete);
    EXPECT_TRUE(first == old && second == old);

    // What the upload changed is seen at once, by whichever object: no listing tells it.
    for (const file_ptr& seen : {item, late, find(L"file")}) {
        EXPECT_EQ(seen->get_size(), std::ssize(fresh));
        EXPECT_EQ(seen->get_modification_date(), 1'000'000);
    }
    late->close(0);
    late->open(vfs::modeRead, 0);
    content again;
    EXPECT_TRUE(read_all(*late, again, steps_of({100'000})).complete);
    EXPECT_TRUE(again == fresh);
    item->set_description(L"common");
    EXPECT_EQ(late->get_description(), L"common");
}

TEST_F(states_test, a_file_can_be_rewound_and_no_more) {
    const content data = make_content(100'000, 2);
    store(L"file", data);
    const file_ptr file = find(L"file");
    file->open(vfs::modeRead, 0);
    file->seek(0, 0);
    control.reset();
    ASSERT_EQ(file->read(buffer.data(), 5), 5U);
    file->seek(5, 0);
    file->seek(0, 1);
    EXPECT_EQ(data_connections(), 0);
    for (const auto& [offset, origin] : {std::pair(4, 0), {1, 1}, {0, 2}, {-1, 1}}) {
        expect_failure(L"Internal error", L"file::seek(): Operation not implemented",
                       [&] { file->seek(offset, origin); });
    }
    EXPECT_EQ(file->get_pos(), 5);
    ASSERT_EQ(file->read(buffer.data(), 1), 1U);
    EXPECT_EQ(static_cast<unsigned char>(buffer[0]), data[5]);

    file->seek(0, 0);
    EXPECT_EQ(data_connections(), 1);
    EXPECT_EQ(file->get_pos(), 0);
    content again;
    EXPECT_TRUE(read_all(*file, again, steps_of({7'777})).complete);
    EXPECT_TRUE(again == data);
    control.fault({{"kind", "cut_download"}, {"bytes", "0"}});
    expect_failure(L"Seek error", broken_line, [&] { file->seek(0, 0); });
    file->close(0);
}

// A handle that has resumed an upload is used again, and some versions of libcurl leave it
// appending.
TEST_F(states_test, an_upload_that_starts_over_does_not_append) {
    const content data = make_content(13'000'000, 4);
    control.fault({{"kind", "cut_upload"}, {"bytes", "100000"}});
    const file_ptr file = create(L"file", data.size());
    EXPECT_EQ(write_all(*file, data, steps_of({100'001}), 1).failures, 1);
    file->seek(0, 0);
    EXPECT_EQ(file->get_pos(), 0);
    ASSERT_TRUE(write_all(*file, std::span(data).first(300'000), steps_of({16'384})).complete);
    file->close(0);
    EXPECT_TRUE(fetch(L"file") == content(data.begin(), data.begin() + 300'000));

    file->open(overwrite, 0);
    ASSERT_TRUE(write_all(*file, std::span(data).first(200'000), steps_of({16'384})).complete);
    file->close(0);
    EXPECT_TRUE(fetch(L"file") == content(data.begin(), data.begin() + 200'000));
}

} // namespace transfer_test
