/// Local copies of files of the store: when they are reused, asked about and replaced, and what a
/// failure at any step leaves.
#include "../vfs_quilldeck/transfer/store_test.h"

#include "file_calls.h"
#include "scripted_user.h"
#include "second_process.h"
#include "service_url.h"

#include "com/worker.h"
#include "syncer/local_copies.h"
#include "syncer/manager.h"
#include "transfer/opening/download_mutex.h"
#include "transfer/opening/local_copy.h"
#include "transfer/opening/temp_binding.h"
#include "utils/filesystem.h"
#include "utils/unique_handle.h"
#include "vfs_quilldeck/session/session_objects.h"

#include <algorithm>
#include <fstream>
#include <future>
#include <iterator>
#include <optional>

namespace transfer {

namespace {

namespace fs = std::filesystem;
using transfer_test::scripted_prompt;

constexpr auto user_name = L"opener";

std::string read(const fs::path& path) {
    std::ifstream in(path, std::ios::binary);
    return in ? std::string(std::istreambuf_iterator(in), {}) : "none";
}

void write(const fs::path& path, const std::string& text) {
    std::ofstream(path, std::ios::binary) << text;
}

/// What brings the file of `record` here: "opened", "cancelled", or what it failed with.
std::string bring(const std::shared_ptr<vfs::directory>& folder, const shell::PIDLDATA& record,
                  IProgressSink& progress, ui::prompt& prompt) {
    try {
        CLocalCopying(user_name, folder, folder->get_path(), 1, progress, prompt).copy(record);
        return "opened";
    } catch (const user_cancelled&) {
        return "cancelled";
    } catch (const com::worker_exception&) {
        return "words";
    } catch (const vfs::exception&) {
        return "vfs";
    } catch (const std::exception&) {
        return "standard";
    }
}

/// A file of the store with the bytes "remote", and the place of its local copy.
class local_copying : public transfer_test::store_test {
protected:
    local_copying() : local(local_copy_folder(user_name, folder->get_path()) / name) {
        store(name, {'r', 'e', 'm', 'o', 't', 'e'});
        date_remote(noon);
    }

    ~local_copying() override { fs::remove_all(user_folder()); }

    static fs::path user_folder() {
        return fs::path(utils::filesystem::get_special_directory(0)) / L"Quilldeck" / user_name;
    }

    void date_remote(vfs::time_seconds time) {
        find(name)->set_modification_date(time);
        record = shell::PIDLDATA(find(name));
        control.reset();
    }

    std::string open(transfer_test::scripted_prompt& prompt, int patience = 1'000'000) {
        transfer_test::scripted_progress progress;
        progress.patience = patience;
        return bring(folder, record, progress, prompt);
    }

    std::string open(const std::string& answers = {}) {
        scripted_prompt prompt(answers);
        const std::string result = open(prompt);
        return prompt.asked.empty() ? result : result + " " + prompt.asked;
    }

    /// The local copy counts as unchanged.
    void note_date() const {
        syncer::local_copies copies(user_name);
        auto known = copies.find(local).value_or(syncer::local_copy());
        known.date_given = read_file_time(local).value_or(0);
        copies.put(known);
        copies.save();
    }

    int downloads() {
        const auto log = control.log();
        return static_cast<int>(std::ranges::count_if(log, [](const auto& request) {
            return request.value_of("action") == "open_file_download";
        }));
    }

    /// The names beside the local copy, its own too.
    std::wstring names() const {
        std::wstring found;
        for (const auto& entry : fs::directory_iterator(local.parent_path())) {
            found += (found.empty() ? L"" : L"|") + entry.path().filename().native();
        }
        return found;
    }

    static constexpr vfs::time_seconds noon = 1'600'000'000;
    const std::wstring name = L"a b.txt";
    const fs::path local;
    const fs::path kept = local.parent_path() / L"a b (2).txt";
    shell::PIDLDATA record;
};

TEST_F(local_copying, reuses_replaces_and_asks_by_dates_and_the_record) {
    /// What is in place before.
    enum place { nothing, given, edited, foreign, of_another_file, protected_one };

    struct row {
        place before;
        int newer; ///< seconds by which the store's file is newer than what is in place
        const char* answers;
        const char* result;
        const char* content;
        const char* kept;
        int downloads;
    };

    const row rows[] = {
        {nothing, 0, "", "opened", "remote", "none", 1},
        {given, 0, "", "opened", "given", "none", 0},
        {given, 1, "", "opened", "remote", "none", 1},
        {given, -1, "", "opened", "given", "none", 0},
        {edited, 0, "", "opened", "edited", "none", 0},
        {edited, 1, "Y", "opened 1850/1870#33", "edited", "none", 0},
        {edited, 1, "N", "opened 1850/1870#33", "remote", "edited", 1},
        {edited, 1, "C", "cancelled 1850/1870#33", "edited", "none", 0},
        // Whatever the record does not know may be somebody's work.
        {foreign, 0, "", "opened", "foreign", "none", 0},
        {foreign, 1, "N", "opened 1850/1870#33", "remote", "foreign", 1},
        {foreign, 1, "C", "cancelled 1850/1870#33", "foreign", "none", 0},
        // Two files of the store may have one place: that of the other one is not this one's.
        {of_another_file, -1, "", "opened", "remote", "none", 1},
        {protected_one, 1, "", "opened", "remote", "none", 1},
    };
    for (const row& each : rows) {
        SCOPED_TRACE(std::to_string(each.before) + " " + std::to_string(each.newer) + each.answers);
        fs::remove_all(user_folder());
        date_remote(noon);
        if (each.before != nothing) {
            ASSERT_EQ(open(), "opened");
            write(local, each.before == edited    ? "edited"
                         : each.before == foreign ? "foreign"
                                                  : "given");
            fs::last_write_time(local, std::chrono::file_clock::from_sys(
                                           std::chrono::sys_seconds(std::chrono::seconds(noon))));
            syncer::local_copies copies(user_name);
            auto known = copies.find(local).value_or(syncer::local_copy());
            EXPECT_EQ(known.remote_path, L"Quilldeck/" + folder->get_name() + L"/" + name);
            EXPECT_EQ(known.remote_id, record.get_id());
            if (each.before == foreign) {
                fs::remove(user_folder() / L"settings" / L"local_copies.xml");
            } else {
                known.date_given += each.before == edited ? 1 : 0;
                known.remote_id += each.before == of_another_file ? L"0" : L"";
                copies.put(known);
                copies.save();
            }
            if (each.before == protected_one) {
                SetFileAttributesW(local.c_str(), FILE_ATTRIBUTE_READONLY);
            }
        }
        date_remote(noon + each.newer);
        EXPECT_EQ(open(each.answers), each.result);
        EXPECT_EQ(read(local), each.content);
        EXPECT_EQ(read(kept), each.kept);
        EXPECT_EQ(downloads(), each.downloads);
        if (each.downloads != 0) {
            EXPECT_EQ(read_file_time(local), (noon + each.newer + 11'644'473'600) * 10'000'000);
            // The next one is reused.
            EXPECT_EQ(open(), "opened");
            EXPECT_EQ(downloads(), 1);
        }
    }
}

TEST_F(local_copying, never_takes_what_was_kept_for_the_copy_of_its_namesake) {
    ASSERT_EQ(open(), "opened");
    write(local, "edited");
    date_remote(4'000'000'000);
    ASSERT_EQ(open("N"), "opened 1850/1870#33");
    store(L"a b (2).txt", {'n', 'e', 'w'});
    record = shell::PIDLDATA(find(L"a b (2).txt"));
    EXPECT_EQ(open("N"), "opened 1850/1870#33");
    EXPECT_EQ(read(kept), "new");
    EXPECT_EQ(read(local.parent_path() / L"a b (2) (2).txt"), "edited");
}

TEST_F(local_copying, keeps_what_is_edited_during_the_download) {
    struct editing final : IProgressSink {
        explicit editing(fs::path path) : edited(std::move(path)) {}

        void start() override {}

        void set_title(const std::wstring&) override {}

        void set_line(DWORD, const std::wstring&) override {}

        void set_progress(std::uint64_t, std::uint64_t) override { write(edited, "edited"); }

        void reset_timer() override {}

        bool has_user_cancelled() override { return false; }

        void stop() noexcept override {}

        const fs::path edited;
    };

    for (const char* answer : {"Y", "N"}) {
        fs::remove_all(user_folder());
        date_remote(noon);
        ASSERT_EQ(open(), "opened");
        date_remote(noon + 1);
        editing progress(local);
        scripted_prompt prompt(answer);
        EXPECT_EQ(bring(folder, record, progress, prompt), "opened");
        EXPECT_EQ(prompt.asked, "1850/1870#33");
        EXPECT_EQ(prompt.last_text.substr(0, 34), L"You changed your copy of 'a b.txt'");
        EXPECT_EQ(read(local), *answer == 'Y' ? "edited" : "remote");
        EXPECT_EQ(read(kept), *answer == 'Y' ? "none" : "edited");
        EXPECT_EQ(names(), *answer == 'Y' ? name : L"a b (2).txt|" + name);
    }
}

TEST_F(local_copying, has_a_whole_copy_in_place_whatever_fails) {
    ASSERT_EQ(open(), "opened");
    write(local, "given");
    const auto make_old = [&] {
        fs::last_write_time(local, std::chrono::file_clock::from_sys(std::chrono::sys_seconds()));
        note_date();
        control.reset();
    };
    const auto expect = [&](bool replaced) {
        EXPECT_EQ(read(local), replaced ? "remote" : "given");
        EXPECT_EQ(names(), name);
        write(local, "given");
        make_old();
    };
    make_old();

    // The store fails, and the line in the last byte.
    using fault = std::vector<std::pair<std::string, std::string>>;
    const auto error = [](const char* action) {
        return fault{{"kind", "error"},   {"action", action},    {"type", "0"},
                     {"name", "Refused"}, {"description", "No"}, {"count", "2"}};
    };
    for (const fault& each : {error("open_file_download"), error("close_file_download"),
                              fault{{"kind", "cut_download"}, {"bytes", "5"}}}) {
        for (const std::string answers : {"C", "RRR", "RC"}) {
            SCOPED_TRACE(each[1].second + answers);
            control.fault(each);
            scripted_prompt prompt(answers);
            const std::string result = open(prompt);
            EXPECT_EQ(prompt.asked.substr(0, 8), "words#15");
            // A broken line is there again at the second try.
            const bool replaced = answers == "RRR" || (answers == "RC" && each[1].second == "5");
            EXPECT_EQ(result, replaced ? "opened" : "vfs");
            expect(replaced);
        }
    }
    // The n-th call of the file system fails as on a full disk.
    int tried = 0;
    for (int number = 1;; ++number) {
        SCOPED_TRACE(number);
        for (const std::string answers : {"RRRRRR", "C"}) {
            support::arm_file_calls(number, support::mishap::disk_full);
            scripted_prompt prompt(answers);
            const std::string result = open(prompt);
            tried = support::disarm_file_calls();
            const bool is_whole = answers != "C" || prompt.asked.empty();
            EXPECT_EQ(result == "opened", is_whole);
            const bool replaced = read(local) == "remote";
            EXPECT_TRUE(replaced || !is_whole);
            expect(replaced);
        }
        if (tried < number) {
            break;
        }
    }
    EXPECT_GT(tried, 5);
    // Cancel is pressed at the n-th look.
    for (int patience = 1;; ++patience) {
        scripted_prompt prompt;
        const std::string result = open(prompt, patience);
        EXPECT_EQ(prompt.asked, "");
        expect(result == "opened");
        if (result == "opened") {
            break;
        }
        EXPECT_EQ(result, "cancelled");
        EXPECT_LT(patience, 10);
    }
}

TEST_F(local_copying, lets_no_name_of_the_store_lead_elsewhere) {
    const std::wstring odd[] = {L"..",     L"a\\b", L"a/b", std::wstring(259, L'n'),
                                L"",       L"con",  L"a:b", L"dot.",
                                L"blank ", L"x\n"};
    for (const std::wstring& each : odd) {
        record.set_name(each);
        EXPECT_EQ(open("C"), "vfs words#15") << each.size();
    }
    EXPECT_EQ(downloads(), 0);
    EXPECT_EQ(names(), L"");
    for (const wchar_t* path : {L"a/../b", L"a\\b", L"nul/a", L"c:/a"}) {
        EXPECT_THROW(local_copy_folder(user_name, path), vfs::exception) << path;
    }
    EXPECT_EQ(local_copy_folder(user_name, L"/a //b/"), local_copy_folder(user_name, L"a/b"));
    // Only of the user's own tree a path finds its way back.
    EXPECT_TRUE(has_path_of_its_own(*folder, false));
    const auto root = std::dynamic_pointer_cast<vfs::directory>(client->get_root());
    EXPECT_TRUE(has_path_of_its_own(*root, false));
    for (const wchar_t* each : {L"Trash", L"Shared Folders"}) {
        EXPECT_FALSE(has_path_of_its_own(
            *std::dynamic_pointer_cast<vfs::directory>(root->find_item_by_name(each, true)),
            false));
    }
}

/// In the other process: "hold", which dies with the mutex; a number, for the call of the file
/// system at which the next line ends the process; or the name of the folder whose file it brings.
std::string answer_in_second(const std::string& line) {
    static std::optional<download_mutex::hold> held;
    static int number = 0;
    if (std::ranges::all_of(line, [](char c) { return c >= '0' && c <= '9'; })) {
        number = std::stoi(line);
        return "armed";
    }
    transfer_test::scripted_progress progress;
    const download_mutex mutex;
    if (line == "hold") {
        held.emplace(mutex, progress);
        return "held";
    }
    static vfs_quilldeck::client client = [] {
        support::set_service_url(support::environment("QUILLDECK_TEST_HTTPS_URL"));
        return vfs_quilldeck::client(L"demo", L"demo");
    }();
    const auto root = std::dynamic_pointer_cast<vfs::directory>(client.get_root());
    const auto folder = std::dynamic_pointer_cast<vfs::directory>(
        root->find_item_by_name(std::wstring(line.begin(), line.end()), true));
    const auto items = folder->get_items();
    scripted_prompt prompt;
    const download_mutex::hold hold(mutex, progress);
    if (number != 0) {
        support::arm_file_calls(number, support::mishap::crash);
    }
    return bring(folder, shell::PIDLDATA(items.front()), progress, prompt);
}

TEST_F(local_copying, is_done_by_one_process_at_a_time) {
    EXPECT_THROW(download_mutex(), com::worker_exception);
    const utils::unique_handle made(
        CreateMutexW(nullptr, FALSE, vfs_quilldeck::transfer_mutex_name));
    const download_mutex mutex;
    transfer_test::scripted_progress progress;
    {
        const support::second_process other;
        ASSERT_EQ(other.ask("hold"), "held");
        progress.patience = 2;
        EXPECT_THROW(download_mutex::hold(mutex, progress), user_cancelled);
    }
    // It died with the mutex.
    const download_mutex::hold again(mutex, progress);
    std::vector<std::future<std::string>> others;
    for (int count = 0; count < 2; ++count) {
        others.push_back(std::async(std::launch::async, [this] {
            const std::wstring path = folder->get_name();
            return support::second_process().ask(std::string(path.begin(), path.end()));
        }));
    }
    Sleep(300);
    EXPECT_FALSE(fs::exists(local));
    ReleaseMutex(made.get());
    for (auto& other : others) {
        EXPECT_EQ(other.get(), "opened");
    }
    EXPECT_EQ(downloads(), 1);
    EXPECT_EQ(read(local), "remote");
}

TEST_F(local_copying, leaves_a_whole_copy_and_no_half_one_when_the_process_dies) {
    const utils::unique_handle made(
        CreateMutexW(nullptr, FALSE, vfs_quilldeck::transfer_mutex_name));
    const std::wstring path = folder->get_name();
    int leftovers = 0;
    for (int number = 1;; ++number) {
        SCOPED_TRACE(number);
        date_remote(noon);
        ASSERT_EQ(open(), "opened");
        write(local, "given");
        note_date();
        date_remote(4'000'000'000);
        const support::second_process other;
        other.ask(std::to_string(number));
        try {
            EXPECT_EQ(other.ask(std::string(path.begin(), path.end())), "opened");
            break;
        } catch (const std::runtime_error&) {
            const std::string left = read(local);
            EXPECT_TRUE(left == "remote" || left == "given") << left;
            leftovers += names().find(L".part") != std::wstring::npos ? 1 : 0;
            fs::remove_all(user_folder());
        }
    }
    // But between the end of the download and the move there is a moment without an owner.
    EXPECT_LE(leftovers, 1);
}

} // namespace

} // namespace transfer

int main(int argc, char** argv) {
    support::serve_if_second(argc, argv, &transfer::answer_in_second);
    testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
