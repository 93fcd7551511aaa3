#include "process_census.h"
#include "store_test.h"
#include "vfs_quilldeck/wire/curl_descriptor_cache.h"

#include <functional>
#include <stdexcept>
#include <tuple>

namespace vfs_quilldeck {

namespace {

using namespace std::string_literals;

class failure : public store_test {
protected:
    /// Fails each request of `act` in turn, in each way: it throws, and done once more it succeeds.
    void
    fail_each_request(const std::function<void()>& act, const std::function<void()>& undo = [] {});
    void run_scenario();

    std::size_t failures = 0;
};

void failure::fail_each_request(const std::function<void()>& act,
                                const std::function<void()>& undo) {
    const std::wstring no_line = L"Please, check your internet connection or firewall settings";
    for (const auto& [kind, count, description] :
         {std::tuple("drop", "1000", no_line), std::tuple("garbage", "1", L"Server side error"s),
          std::tuple("error", "1", L"An error on demand"s)}) {
        for (int request = 0;; ++request) {
            const std::string skip = std::to_string(request);
            SCOPED_TRACE(kind + (" at request " + skip));
            ASSERT_LT(request, 20);
            control.fault({{"kind", kind}, {"count", count}, {"skip", skip}});
            const std::wstring met = failure_of(act);
            control.reset();
            EXPECT_EQ(request_descriptor_cache.get_usage().locked, 0u);
            EXPECT_EQ(transfer_descriptor_cache.get_usage().locked, 0u);
            if (met == L"none") {
                undo();
                break;
            }
            ++failures;
            EXPECT_EQ(met.substr(met.find(L": ") + 2), description);
            ASSERT_EQ(failure_of(act), L"none");
            undo();
        }
    }
}

void failure::run_scenario() {
    std::unique_ptr<client> session;
    fail_each_request([&] { session = std::make_unique<client>(L"demo", L"demo"); });
    fail_each_request([&] { client restored(session->get_user_info()); });

    const auto root = root_of(*session);
    fail_each_request([&] { session->get_directory(L"Failures/Inner", true); },
                      [&] {
                          root->get_items();
                          root->delete_item(L"Failures", false);
                      });
    const auto folder = as_directory(session->get_directory(L"Failures", true));

    file_ptr file;
    fail_each_request(
        [&] {
            if (!file) {
                file = as_file(folder->create_and_open_file(L"f", 6, 3));
                EXPECT_EQ(file->write("abc", 3), 3u);
            }
            file->close(1'000);
        },
        [&] {
            EXPECT_EQ(failure_of([&] { file->close(0); }), L"Close failed: File is not opened");
            folder->delete_item(file, false);
            file = nullptr;
        });
    file = as_file(folder->create_file(L"f"));
    fail_each_request([&] {
        if (file->get_open_mode() == 0) {
            file->open(6, 2);
            file->write("de", 2);
        }
        file->close(0);
        file->open(vfs::modeRead, 0);
        file->close(0);
    });
    fail_each_request([&] { folder->rename_item(L"f", L"g"); },
                      [&] { folder->rename_item(file, L"f"); });
    fail_each_request([&] { file->copy(root, false); },
                      [&] {
                          root->get_items();
                          root->delete_item(L"f", false);
                      });
    const auto pictures = as_directory(session->get_directory(L"Pictures", false));
    fail_each_request([&] {
        file->set_price(2);
        file->set_description(L"d");
        folder->set_access(vfs::access_public);
        EXPECT_EQ(file->get_path(), L"Failures/f");
        session->get_storage_info();
        session->get_pro_settings();
        session->get_user_notifications();
        folder->get_sharewith_items();
        pictures->find_item_by_name(L"Dusk.jpg", true)->get_thumbnail();
    });
    fail_each_request([&] { root->delete_item(folder, true); }, [&] { folder->restore(); });
    root->delete_item(folder, false);
}

TEST_F(failure, of_any_request_leaves_everything_as_it_was) {
    run_scenario();
    const support::process_census first = support::count_process();
    failures = 0;
    run_scenario();
    EXPECT_GE(failures, 90u);
    // Threads of the platform's pool come and go by themselves.
    const support::process_census second = support::count_process();
    EXPECT_LE(second.handles, first.handles + 3);
    EXPECT_LE(second.threads, first.threads + 1);
}

TEST_F(failure, of_one_attempt_or_two_is_not_seen) {
    client session = sign_in();
    // libcurl asks once more by itself when a connection that it kept turns out to be dead:
    // attempts can be counted once there is none.
    for (int i = 0; i < 2; ++i) {
        control.reset();
        control.fault({{"kind", "drop"}, {"count", "100"}});
        EXPECT_EQ(failure_of([&] { session.get_storage_info(); }), request_failed);
    }
    EXPECT_EQ(control.log().size(), 3u);
    for (const std::size_t drops : {2U, 1U}) {
        control.reset();
        control.fault({{"kind", "drop"}, {"count", std::to_string(drops)}});
        EXPECT_GT(session.get_storage_info().capacity, 0);
        EXPECT_EQ(control.log().size(), drops + 1);
    }
    // A reply that arrived is never asked for again, whatever it is.
    for (const auto kind : {"garbage", "error"}) {
        control.reset();
        control.fault({{"kind", kind}});
        EXPECT_THROW(session.get_storage_info(), exception);
        EXPECT_EQ(control.log().size(), 1u);
    }
}

TEST_F(failure, is_what_a_repeated_request_says_when_only_its_answer_was_lost) {
    client session = sign_in();
    const auto root = root_of(session);
    root->get_items();
    const auto lose_answer = [&](const std::string& action) {
        control.fault({{"kind", "drop"}, {"when", "after"}, {"action", action}});
    };
    lose_answer("create_dir");
    EXPECT_THROW(root->create_directory(L"Lost"), vfs::item_already_exists_exception);
    const vfs::item_ptr made = root->find_item_by_name(L"Lost", false);
    lose_answer("set_dir_description");
    made->set_description(L"seen");
    EXPECT_EQ(root->find_item_by_name(L"Lost", true)->get_description(), L"seen");
    lose_answer("rename_dir");
    root->rename_item(made, L"Found");
    lose_answer("remove_dir");
    EXPECT_EQ(failure_of([&] { root->delete_item(L"Found", false); }).find(L"Not found: "), 0u);
    EXPECT_THROW(root->find_item_by_name(L"Found", true), vfs::item_not_found_exception);

    // An upload that is closed twice is closed.
    const auto file = as_file(root->create_and_open_file(L"Lost.txt", 6, 1));
    file->write("x", 1);
    lose_answer("close_file_upload");
    file->close(0);
    EXPECT_EQ(as_file(root->find_item_by_name(L"lost.txt", false))->get_size(), 1);
    root->delete_item(file, false);
}

TEST_F(failure, is_told_in_the_words_of_who_met_it) {
    const vfs::user_info nobody{L"no session", L"", L"", L"", L""};
    EXPECT_EQ(failure_of([&] { client{nobody}; }).find(L"Not signed in: "), 0u);
    client session = sign_in();

    const struct {
        std::string reply;
        std::wstring failure;
        bool is_clash;
    } replies[] = {
        {"<R><Error><Type>1</Type><Name>N</Name><Description>D\\<</Description></Error></R>",
         L"N: D<", true},
        {"<R><Error><Type>2</Type><Name>N</Name></Error></R>", L"N: ", false},
        {"<R><Error><Name>N</Name><Description>D</Description></Error></R>", L"N: D", false},
        {"<R><Error><Type>x1</Type></Error><Error><Type>1</Type></Error></R>", L": ", false},
        {"<R><Error></Error></R>", L"none", false},
        {"<R><a><Error><Type>1</Type></Error></a></R>", L"none", false},
        {"", L"Parse error: Server side error", false},
        {"<?xml version=\"1.0\"?><Result></Result>", L"Parse error: Server side error", false},
    };

    for (const auto& [reply, expected, is_clash] : replies) {
        control.reset();
        answer(reply);
        try {
            session.operations_request({});
            EXPECT_EQ(expected, L"none") << reply;
        } catch (const vfs::exception& met) {
            EXPECT_EQ(met.get_name() + L": " + met.get_description(), expected) << reply;
            EXPECT_EQ(dynamic_cast<const vfs::item_already_exists_exception*>(&met) != nullptr,
                      is_clash);
        }
    }
    // Data that cannot be read end in a session without transfers, or in none.
    const auto sign_in_with = [this](const std::string& data) {
        control.reset();
        answer("<R><UserID>7</UserID><Data>" + data + "</Data></R>");
        return sign_in();
    };
    EXPECT_EQ(sign_in_with("").get_host() + sign_in_with("").get_transfer_user(), "");
    EXPECT_THROW(sign_in_with("AAAAAAAAAAAAAAAA"), std::runtime_error);
}

} // namespace

} // namespace vfs_quilldeck
