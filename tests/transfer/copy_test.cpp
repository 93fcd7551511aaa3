/// The copy logic over the real store: what is asked, what reaches the store, and what stands there
/// afterwards, for each step that can fail and each answer.
#include "../vfs_quilldeck/transfer/store_test.h"

#include "failing_memory.h"
#include "scripted_source.h"
#include "scripted_user.h"

#include "transfer/copy_failure.h"
#include "transfer/copy_items.h"

#include <algorithm>
#include <new>
#include <tuple>

namespace transfer {

namespace {

using transfer_test::content;
using transfer_test::file_ptr;
using transfer_test::make_content;
using transfer_test::scripted_progress;
using transfer_test::scripted_prompt;
using transfer_test::source_file;
using transfer_test::source_folder;

using directory_ptr = std::shared_ptr<vfs::directory>;

class copies : public transfer_test::store_test {
protected:
    copies() {
        const auto root = std::dynamic_pointer_cast<vfs::directory>(client->get_root());
        m_trash =
            std::dynamic_pointer_cast<vfs::directory>(root->find_item_by_name(L"Trash", true));
    }

    ~copies() override {
        control.reset();
        for (const vfs::item_ptr& item : m_trash->get_items()) {
            if (item->get_name().ends_with(m_suffix)) {
                m_trash->delete_item(item, false);
            }
        }
    }

    /// A name that no other case uses.
    void begin_case(bool inside) {
        name = L"file " + std::to_wstring(++m_number) + m_suffix;
        target = std::dynamic_pointer_cast<vfs::directory>(
            folder->create_directory(L"case " + std::to_wstring(m_number)));
        is_inside = inside;
        hook = nullptr;
        context.single = true;
        user = scripted_prompt();
        progress = scripted_progress();
    }

    static file_ptr put(vfs::directory& where, const std::wstring& named, const content& data) {
        const auto made = std::dynamic_pointer_cast<vfs::file>(
            where.create_and_open_file(named, 6, static_cast<std::int64_t>(data.size())));
        made->write(data.data(), static_cast<std::uint32_t>(data.size()));
        made->close(1'000'000);
        return made;
    }

    std::shared_ptr<source_file> source(const std::wstring& named, const content& data) {
        return std::make_shared<source_file>(named, std::make_shared<content>(data), hook,
                                             is_inside ? put(*folder, named, data) : nullptr);
    }

    /// Copies `items` into `target`.
    HRESULT copy(std::vector<vfs::item_ptr> items, bool inside = false, bool move = false) {
        const auto selection =
            std::make_shared<source_folder>(L"selection", std::move(items), hook);
        return CItemsCopy({.source = selection,
                           .destination = target,
                           .destination_path = L"there",
                           .move = move,
                           .internal = inside},
                          progress, user)
            .run();
    }

    /// Lets an operation of the sources fail once.
    void fail_source(const std::string& operation, int passed = 0) {
        hook = [operation, passed](const std::string& done) mutable {
            if (done == operation && --passed == -1) {
                throw copy_failure(L"Not now");
            }
        };
    }

    /// Lets the store refuse an action once.
    void refuse(const std::string& action, int passed = 0) {
        control.fault({{"kind", "error"},
                       {"action", action},
                       {"skip", std::to_string(passed)},
                       {"type", "0"},
                       {"name", "Refused"},
                       {"description", "Not now"}});
    }

    /// The actions that reached the store, without the listings of the target at both ends.
    std::string asked() {
        std::string actions;
        for (const auto& request : control.log()) {
            actions += (actions.empty() ? "" : " ") + request.value_of("action");
        }
        constexpr std::string_view frame = "list_dir";
        EXPECT_TRUE(actions.starts_with(frame) && actions.ends_with(frame)) << actions;
        if (actions.size() <= 2 * frame.size() + 1) {
            return {};
        }
        return actions.substr(frame.size() + 1, actions.size() - 2 * frame.size() - 2);
    }

    /// "new", "old" or "-": what stands under `named`.
    std::string standing(vfs::directory& where, const std::wstring& named) const {
        try {
            const auto found =
                std::dynamic_pointer_cast<vfs::file>(where.find_item_by_name(named, true));
            if (!found) {
                return "folder";
            }
            const bool is_fresh = found->get_size() == static_cast<std::int64_t>(fresh.size());
            if (found->get_size() != static_cast<std::int64_t>((is_fresh ? fresh : old).size())) {
                return "something of " + std::to_string(found->get_size());
            }
            return is_fresh ? "new" : "old";
        } catch (const vfs::item_not_found_exception&) {
            return "-";
        }
    }

    const content fresh = make_content(50'000, 1);
    const content old = make_content(20, 2);
    const content other = make_content(7, 3);
    transfer_test::source_hook hook;
    scripted_progress progress;
    scripted_prompt user;
    copy_context context{.progress = progress, .prompt = user};
    std::wstring name;
    directory_ptr target;
    bool is_inside = false;
    directory_ptr m_trash;

private:
    const std::wstring m_suffix = L" of " + std::to_wstring(GetCurrentProcessId());
    int m_number = 0;
};

/// A step of the copy of one file that fails once. The requests are those up to the failure, and
/// those behind it when the step is made again or the file is given up.
struct step {
    const char* fails; ///< an action of the store, or "source OPERATION"
    bool inside;
    bool replaces;
    UINT text;
    const char* until;
    const char* again;
    const char* given_up;
    const char* left;  ///< under the name when the file was given up
    const char* trash; ///< and in the Trash
};

#define CREATED "create_and_open_file"
#define CLASH "create_and_open_file list_dir"
#define REOPENED CLASH " open_file_upload"

const std::vector<step> steps{
    // A new file.
    {"source size", false, false, 1355, "", CREATED " close_file_upload", "", "-", "-"},
    {CREATED, false, false, 1355, CREATED, CREATED " close_file_upload", "", "-", "-"},
    {"source open", false, false, 1356, CREATED, "close_file_upload", "remove_file", "-", "-"},
    {"source read", false, false, 1356, CREATED, "close_file_upload", "remove_file", "-", "-"},
    {"source close", false, false, 1359, CREATED, "close_file_upload", "remove_file", "-", "-"},
    {"source date", false, false, 1359, CREATED, "close_file_upload", "remove_file", "-", "-"},
    {"close_file_upload", false, false, 1359, CREATED " close_file_upload", "close_file_upload",
     "remove_file", "-", "-"},
    // One that replaces another. What was begun is gone, and the old content is in the Trash.
    {"list_dir", false, true, 1353, CLASH, "list_dir open_file_upload close_file_upload", "", "old",
     "-"},
    {"open_file_upload", false, true, 1357, REOPENED, "open_file_upload close_file_upload",
     "move_file_to_trash", "-", "old"},
    {"source open", false, true, 1356, REOPENED, "close_file_upload", "move_file_to_trash", "-",
     "old"},
    {"source read", false, true, 1356, REOPENED, "close_file_upload", "move_file_to_trash", "-",
     "old"},
    {"close_file_upload", false, true, 1359, REOPENED " close_file_upload", "close_file_upload",
     "move_file_to_trash", "-", "old"},
    // By the store itself; the look for the name is what lists.
    {"copy_file", true, false, 1361, "list_dir copy_file", "copy_file", "", "-", "-"},
    {"move_file_to_trash", true, true, 1364, "move_file_to_trash", "move_file_to_trash copy_file",
     "", "old", "-"},
    {"copy_file", true, true, 1361, "move_file_to_trash copy_file", "copy_file", "", "-", "old"},
};

/// Joins words by a blank.
std::string joined(const std::string& left, const std::string& right) {
    return left + (left.empty() || right.empty() ? "" : " ") + right;
}

TEST_F(copies, ask_about_each_step_that_fails) {
    for (const step& each : steps) {
        for (const char answer : {'R', 'C', 'A', 'I'}) {
            // Retry stands in both boxes.
            const bool single = answer == 'C' || (answer == 'R' && each.text % 2 == 0);
            SCOPED_TRACE(std::string(each.fails) + (each.inside ? " inside" : "") +
                         (each.replaces ? " replacing " : " ") + answer);
            begin_case(each.inside);
            if (each.replaces) {
                put(*target, name, old);
            }
            std::vector<vfs::item_ptr> items{source(name, fresh)};
            if (!single) {
                items.push_back(source(name + L" too", fresh));
            }
            control.reset();
            const std::string fails = each.fails;
            if (fails.starts_with("source ")) {
                // The sizes were asked for before.
                fail_source(fails.substr(7), fails.ends_with("size") ? (single ? 1 : 2) : 0);
            } else {
                refuse(fails, fails == "list_dir" ? 1 : 0);
            }
            user.answers = (each.replaces ? "Y" : "") + std::string(1, answer);
            const HRESULT result = copy(items, each.inside, each.inside);

            const bool retried = answer == 'R';
            EXPECT_EQ(result, retried ? S_OK : answer == 'A' ? E_ABORT : E_FAIL);
            const std::string question =
                each.replaces ? "1320/1321#3" + std::string(single ? "4" : "3") + " " : "";
            EXPECT_EQ(user.asked,
                      question + "1354/" + std::to_string(each.text) + (single ? "#15" : "#12"));
            EXPECT_EQ(user.values_of_last.front(), name);
            EXPECT_EQ(user.values_of_last.back(), L"Not now");
            std::string requests = joined(each.until, retried ? each.again : each.given_up);
            const bool goes_on = !single && answer != 'A';
            if (goes_on) {
                requests = joined(requests, each.inside ? "list_dir copy_file"
                                                        : CREATED " close_file_upload");
            }
            EXPECT_EQ(asked(), requests);
            EXPECT_EQ(standing(*target, name), retried ? "new" : each.left);
            EXPECT_EQ(standing(*m_trash, name), !retried                       ? each.trash
                                                : each.inside && each.replaces ? "old"
                                                                               : "-");
            EXPECT_EQ(standing(*target, name + L" too"), goes_on ? "new" : "-");
            EXPECT_EQ(progress.running, 0);
        }
    }
}

TEST_F(copies, tell_what_they_do_and_keep_bytes_and_times) {
    begin_case(false);
    auto items = std::vector<vfs::item_ptr>{source(name, fresh), source(L"empty", {})};
    EXPECT_EQ(copy(items), S_OK);
    EXPECT_EQ(progress.shown,
              L"Copying...|2 To 'Quilldeck\\there'|1 Copying '" + name + L"'|1 Copying 'empty'|");
    EXPECT_EQ(progress.done, fresh.size());
    EXPECT_EQ(progress.total, fresh.size());
    EXPECT_EQ(user.asked, "");
    std::swap(folder, target);
    EXPECT_TRUE(fetch(name) == fresh);
    EXPECT_EQ(find(name)->get_modification_date(), source_file::date);
    EXPECT_EQ(find(L"empty")->get_size(), 0);
    std::swap(folder, target);

    // Inside the store a move takes the source away and no byte is moved by us.
    begin_case(true);
    const auto moved = source(name, fresh);
    EXPECT_EQ(copy({moved}, true, true), S_OK);
    EXPECT_TRUE(progress.shown.starts_with(L"Moving...|"));
    EXPECT_TRUE(progress.shown.ends_with(L"1 Moving '" + name + L"'|"));
    EXPECT_EQ(progress.done, fresh.size());
    EXPECT_EQ(standing(*target, name), "new");
    EXPECT_EQ(standing(*folder, name), "-");
}

TEST_F(copies, replace_what_the_user_gives_for_it) {
    struct row {
        const char* answer;
        bool single;
        HRESULT result;
        const char* left;
        const char* trash_inside; ///< where the store copies, the old one goes to the Trash
    };

    const row rows[] = {
        {"Y", true, S_OK, "new", "old"},   {"N", true, E_FAIL, "old", "-"},
        {"Y", false, S_OK, "new", "old"},  {"N", false, E_FAIL, "old", "-"},
        {"C", false, E_ABORT, "old", "-"},
    };
    for (const row& each : rows) {
        for (const bool inside : {false, true}) {
            SCOPED_TRACE(std::string(each.answer) + (inside ? " inside" : ""));
            begin_case(inside);
            put(*target, name, old);
            std::vector<vfs::item_ptr> items{source(name, fresh)};
            if (!each.single) {
                items.push_back(source(name + L" too", fresh));
            }
            user.answers = each.answer;
            EXPECT_EQ(copy(items, inside), each.result);
            EXPECT_EQ(user.asked, each.single ? "1320/1321#34" : "1320/1321#33");
            EXPECT_EQ(user.last_text, L"File with name '" + name + L"' already exists. Replace?");
            EXPECT_EQ(standing(*target, name), each.left);
            EXPECT_EQ(standing(*m_trash, name), inside ? each.trash_inside : "-");
            EXPECT_EQ(standing(*target, name + L" too"),
                      each.single || each.result == E_ABORT ? "-" : "new");
        }
    }
    for (const bool inside : {false, true}) {
        begin_case(inside);
        target->create_directory(name);
        user.answers = inside ? "O" : "YO";
        EXPECT_EQ(copy({source(name, fresh)}, inside), E_ABORT);
        EXPECT_EQ(user.asked, inside ? "1352/1353#10" : "1320/1321#34 1352/1353#10");
        EXPECT_EQ(user.last_text, L"File '" + name + L"' could not be created.");
        EXPECT_EQ(standing(*target, name), "folder");
    }
}

TEST_F(copies, leave_nothing_half_done_when_the_user_cancels) {
    // Cancel is pressed at each look that there is, one after another.
    for (const bool inside : {false, true}) {
        for (const bool replaces : {false, true}) {
            HRESULT result = E_ABORT;
            for (int look = 1; result != S_OK; ++look) {
                SCOPED_TRACE(look);
                ASSERT_LT(look, 30);
                begin_case(inside);
                if (replaces) {
                    put(*target, name, old);
                }
                const auto moved = source(name, fresh);
                progress.patience = look;
                user.answers = "Y";
                result = copy({moved}, inside, inside);
                const std::string left = standing(*target, name);
                const std::string trash = standing(*m_trash, name);
                if (result == S_OK) {
                    EXPECT_EQ(left, "new");
                    continue;
                }
                EXPECT_EQ(result, E_ABORT);
                if (inside) {
                    // Once the store has moved it, it stays where it is.
                    EXPECT_NE(left == "new", standing(*folder, name) == "new");
                } else {
                    EXPECT_EQ(left + trash, user.asked.empty() && replaces ? "old-"
                                            : replaces                     ? "-old"
                                                                           : "--");
                }
            }
        }
    }
}

TEST_F(copies, leave_no_part_when_memory_runs_out) {
    // One allocation of this thread fails, further and further behind.
    bool failed = true;
    for (int number = 1; failed; number += 1 + number / 3) {
        ASSERT_LT(number, 100'000);
        SCOPED_TRACE(number);
        begin_case(false);
        const auto copied = source(name, fresh);
        HRESULT result = E_OUTOFMEMORY;
        transfer_test::allocations_until_failure = number;
        try {
            result = copy({copied});
        } catch (const std::bad_alloc&) {
            result = E_OUTOFMEMORY;
        }
        failed = std::exchange(transfer_test::allocations_until_failure, 0) <= 0;
        // What fails when it has arrived leaves it there. A new and empty file is nobody's when
        // there was no room for the answer that told whose it is.
        const std::string left = standing(*target, name);
        EXPECT_TRUE(left == "new" || (result != S_OK && (left == "-" || left == "something of 0")))
            << left;
        EXPECT_EQ(progress.running, 0);
    }
}

TEST_F(copies, make_and_merge_folders) {
    struct row {
        const char* there;   ///< what bears the folder's name: "", "folder" or "file"
        const char* refused; ///< an action that the store refuses once
        const char* answers;
        const char* asked;
        HRESULT result;
        const char* inner; ///< what stands in the folder
        const char* next;  ///< and behind it
    };

    const row rows[] = {
        {"", "", "", "", S_OK, "new", "new"},
        {"", "create_dir", "R", "1350/1351#12", S_OK, "new", "new"},
        {"", "create_dir", "I", "1350/1351#12", E_FAIL, "-", "new"},
        {"", "create_dir", "A", "1350/1351#12", E_ABORT, "-", "-"},
        {"folder", "", "Y", "1322/1323#33", S_OK, "new", "new"},
        {"folder", "", "N", "1322/1323#33", E_FAIL, "-", "new"},
        {"folder", "", "C", "1322/1323#33", E_ABORT, "-", "-"},
        {"file", "", "O", "1350/1351#10", E_ABORT, "-", "-"},
    };
    for (const row& each : rows) {
        SCOPED_TRACE(std::string(each.there) + each.refused + each.answers);
        begin_case(false);
        const std::wstring below = name + L" below";
        if (*each.there) {
            std::string(each.there) == "folder" ? target->create_directory(name)
                                                : target->create_file(name);
        }
        if (*each.refused) {
            refuse(each.refused);
        }
        user.answers = each.answers;
        const auto tree = std::make_shared<source_folder>(
            name, std::vector<vfs::item_ptr>{source(below, fresh)}, hook);
        EXPECT_EQ(copy({tree, source(name + L" next", fresh)}), each.result);
        EXPECT_EQ(user.asked, each.asked);
        const auto made = std::dynamic_pointer_cast<vfs::directory>(
            standing(*target, name) == "folder" ? target->find_item_by_name(name, false) : nullptr);
        EXPECT_EQ(made ? standing(*made, below) : "-", each.inner);
        EXPECT_EQ(standing(*target, name + L" next"), each.next);
    }
}

TEST_F(copies, ask_when_they_cannot_begin_or_show_the_end) {
    struct row {
        const char* source; ///< an operation of the source that fails once
        int passed;         ///< how many of its kind succeed before
        int listing;        ///< the number of the target's listing that is refused; 0: none
        const char* answers;
        const char* asked;
        const wchar_t* text;
        HRESULT result;
    };

    const wchar_t* const measuring = L"Error calculating folder size: 'Not now'";
    const wchar_t* const refreshing = L"Error refreshing folder '%': Not now";
    const row rows[] = {
        {"size", 0, 0, "R", "1354/1363#15", measuring, S_OK},
        {"list", 0, 0, "C", "1354/1363#15", measuring, E_FAIL},
        {"", 0, 1, "R", "1354/1362#15", refreshing, S_OK},
        {"", 0, 1, "C", "1354/1362#15", refreshing, E_FAIL},
        // All has arrived when the view cannot be refreshed.
        {"", 0, 2, "C", "1354/1362#15", refreshing, S_OK},
        {"list", 1, 0, "O", "words#00", L"Copy failed: Not now", E_ABORT},
    };
    for (const row& each : rows) {
        SCOPED_TRACE(std::string(each.source) + each.answers);
        begin_case(false);
        if (*each.source) {
            fail_source(each.source, each.passed);
        } else {
            refuse("list_dir", each.listing - 1);
        }
        user.answers = each.answers;
        EXPECT_EQ(copy({source(name, fresh)}), each.result);
        EXPECT_EQ(user.asked, each.asked);
        std::wstring text = each.text;
        if (const auto at = text.find(L'%'); at != std::wstring::npos) {
            text.replace(at, 1, target->get_name());
        }
        EXPECT_EQ(user.last_text, text);
        EXPECT_EQ(standing(*target, name), each.result == S_OK ? "new" : "-");
        EXPECT_EQ(progress.running, 0);
    }
}

TEST_F(copies, take_no_part_for_the_whole) {
    struct row {
        std::int64_t told; ///< the size that the source tells
        const char* answers;
        HRESULT result;
    };

    const auto real = static_cast<std::int64_t>(fresh.size());
    const row rows[] = {
        {real + 1, "C", E_FAIL}, // it shrank, or the line to it is gone
        {real - 1, "C", E_FAIL}, // it grew
        {0, "", S_OK},           // it does not tell
    };
    for (const row& each : rows) {
        begin_case(false);
        const auto lying = source(name, fresh);
        lying->tell_size(each.told);
        user.answers = each.answers;
        EXPECT_EQ(copy({lying}), each.result);
        EXPECT_EQ(user.asked, each.result == S_OK ? "" : "1354/1356#15");
        EXPECT_EQ(standing(*target, name), each.result == S_OK ? "new" : "-");
    }
    // The size that is told after a question counts from then on.
    begin_case(false);
    const auto changed = source(name, fresh);
    int asked_sizes = 0;
    hook = [&](const std::string& operation) {
        // The one for the sum, the one that is announced, and then the right one.
        asked_sizes += operation == "size" ? 1 : 0;
        changed->tell_size(asked_sizes < 3 ? real - 5 : real);
    };
    user.answers = "R";
    EXPECT_EQ(copy({changed}), S_OK);
}

TEST_F(copies, touch_nothing_that_others_put_there) {
    // While the bytes are on their way, another client takes the new file away and makes its own.
    begin_case(false);
    const auto elsewhere = std::dynamic_pointer_cast<vfs::directory>(
        folder->find_item_by_name(target->get_name(), true));
    hook = [&](const std::string& operation) {
        if (operation == "read") {
            elsewhere->delete_item(name, false);
            put(*elsewhere, name, old);
            throw copy_failure(L"Not now");
        }
    };
    user.answers = "C";
    EXPECT_EQ(copy({source(name, fresh)}), E_FAIL);
    EXPECT_EQ(user.asked, "1354/1356#15");
    EXPECT_EQ(standing(*target, name), "old");

    // The name that is taken leads to what bears it now, and not to what bore it when the transfer
    // began and has been given another one since.
    begin_case(false);
    put(*target, name, old);
    const auto renaming = std::dynamic_pointer_cast<vfs::directory>(
        folder->find_item_by_name(target->get_name(), true));
    bool renamed = false;
    hook = [&](const std::string& operation) {
        if (operation == "size" && !std::exchange(renamed, progress.total != 0)) {
            if (renamed) {
                renaming->rename_item(name, L"kept");
                put(*renaming, name, other);
            }
        }
    };
    user.answers = "Y";
    EXPECT_EQ(copy({source(name, fresh)}), S_OK);
    EXPECT_EQ(standing(*target, name), "new");
    EXPECT_EQ(standing(*target, L"kept"), "old");
}

TEST_F(copies, count_as_failed_what_no_store_can_take) {
    // Noted before the copy, while it ran, at both times, never.
    const std::vector<std::vector<std::wstring>> rows = {
        {L"left out", L""}, {L"", L"left out"}, {L"left out", L"too"}, {L"", L""}};
    for (const auto& row : rows) {
        begin_case(false);
        auto next = row.begin();
        const auto selection = std::make_shared<source_folder>(
            L"selection", std::vector<vfs::item_ptr>{source(name, fresh)}, hook);
        CItemsCopy transfer({.source = selection,
                             .destination = target,
                             .destination_path = L"there",
                             .take_refusals =
                                 [&next] {
                                     return *next++;
                                 }},
                            progress, user);
        const auto told = row.size() - static_cast<std::size_t>(std::ranges::count(row, L""));
        EXPECT_EQ(transfer.run(), told == 0 ? S_OK : E_FAIL);
        EXPECT_EQ(next, row.end());
        EXPECT_EQ(std::ranges::count(user.asked, '#'), static_cast<std::ptrdiff_t>(told));
        EXPECT_EQ(standing(*target, name), "new");
    }
}

TEST_F(copies, survive_answers_and_lines_that_are_lost) {
    // The store has created the file, and the answer was lost: the request was sent again.
    begin_case(false);
    control.fault({{"kind", "drop"}, {"action", "create_and_open_file"}, {"when", "after"}});
    user.answers = "Y";
    EXPECT_EQ(copy({source(name, fresh)}), S_OK);
    EXPECT_EQ(user.asked, "1320/1321#34");
    EXPECT_EQ(standing(*target, name), "new");

    // The file is there, and its upload cannot begin: it does not stay.
    begin_case(false);
    control.fault({{"kind", "cut_control"}, {"command", "STOR"}, {"count", "9"}});
    user.answers = "C";
    EXPECT_EQ(copy({source(name, fresh)}), E_FAIL);
    EXPECT_EQ(user.asked, "1354/1355#15");
    EXPECT_EQ(standing(*target, name), "-");
    control.reset();

    // The line breaks in the middle: Retry goes on there. The file is more than all buffers on the
    // way can hold: one that they swallowed would be saved as it is closed, and nobody asked.
    begin_case(false);
    const content large = make_content(14'000'000, 4);
    control.fault({{"kind", "cut_upload"}, {"bytes", "700000"}});
    user.answers = "RR";
    EXPECT_EQ(copy({source(name, large)}), S_OK);
    EXPECT_TRUE(user.asked.starts_with("1354/1357#15") || user.asked.starts_with("1354/1359#15"))
        << user.asked;
    std::swap(folder, target);
    EXPECT_TRUE(fetch(name) == large);
    std::swap(folder, target);
}

} // namespace

} // namespace transfer
