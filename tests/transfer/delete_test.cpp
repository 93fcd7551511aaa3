#include "../vfs_quilldeck/transfer/store_test.h"

#include "driven_window.h"
#include "eventually.h"
#include "scripted_user.h"

#include "com/apartment.h"
#include "com/module_lock.h"
#include "transfer/delete_items.h"
#include "transfer/delete_worker.h"
#include "transfer/restore.h"

#include <memory>
#include <thread>
#include <vector>

namespace transfer {

namespace {

using directory_ptr = std::shared_ptr<vfs::directory>;

directory_ptr as_directory(const vfs::item_ptr& item) {
    return std::dynamic_pointer_cast<vfs::directory>(item);
}

/// A folder that holds the folder "tree", with two files and an empty folder in it, and a file.
class deletions : public transfer_test::store_test {
protected:
    deletions()
        : trash(as_directory(as_directory(client->get_root())->find_item_by_name(L"Trash", true))) {
        const directory_ptr tree = as_directory(folder->create_directory(L"tree"));
        tree->create_directory(L"empty");
        tree->create_file(L"a");
        tree->create_file(L"b");
        folder->create_file(name);
    }

    ~deletions() override {
        control.reset();
        for (const auto& item : trash->get_items()) {
            trash->delete_item(item, false);
        }
    }

    std::vector<shell::PIDLDATA> records(vfs::directory& where) {
        std::vector<shell::PIDLDATA> found;
        for (const auto& item : where.get_items()) {
            found.emplace_back(item);
        }
        control.reset();
        return found;
    }

    std::string asked() {
        std::string actions;
        for (const auto& request : control.log()) {
            actions += (actions.empty() ? "" : " ") + request.value_of("action");
        }
        return actions;
    }

    const std::wstring name = L"file";
    directory_ptr trash;
};

TEST_F(deletions, go_to_the_trash_whole_and_from_there_bottom_up) {
    struct row {
        bool permanent;
        const char* refused; ///< an action that the store refuses once
        const char* answers;
        int patience; ///< looks until Cancel is pressed
        const char* requests;
        const char* asked;
        std::size_t left; ///< of the two items in the folder
    };

    const row rows[] = {
        {false, "", "", 999, "list_dir list_dir move_dir_to_trash move_file_to_trash", "", 0},
        {false, "move_dir_to_trash", "R", 999,
         "list_dir list_dir move_dir_to_trash move_dir_to_trash move_file_to_trash", "1850/1856#15",
         0},
        {false, "move_dir_to_trash", "C", 999, "list_dir list_dir move_dir_to_trash",
         "1850/1856#15", 2},
        // The one failing listing is that of "tree".
        {false, "list_dir", "R", 999,
         "list_dir list_dir list_dir move_dir_to_trash move_file_to_trash", "words#15", 0},
        {false, "list_dir", "C", 999, "list_dir", "words#15", 2},
        {false, "", "", 5, "list_dir list_dir", "", 2},
        {false, "", "", 14, "list_dir list_dir move_dir_to_trash", "", 1},
        {true, "", "", 999,
         "list_dir list_dir list_dir list_dir remove_dir remove_file remove_file remove_dir "
         "remove_file",
         "", 0},
    };
    for (const row& each : rows) {
        SCOPED_TRACE(std::string(each.refused) + each.answers + std::to_string(each.patience));
        const directory_ptr place = as_directory(folder->create_directory(L"place"));
        const directory_ptr tree = as_directory(place->create_directory(L"tree"));
        tree->create_directory(L"empty");
        tree->create_file(L"a");
        tree->create_file(L"b");
        place->create_file(name);
        const auto selected = records(*place);
        if (*each.refused) {
            control.fault({{"kind", "error"},
                           {"action", each.refused},
                           {"type", "0"},
                           {"name", "Refused"},
                           {"description", "Not now"}});
        }
        transfer_test::scripted_progress progress;
        progress.patience = each.patience;
        transfer_test::scripted_prompt user(each.answers);
        CItemsDeletion(place, each.permanent, progress, user).run(selected);
        EXPECT_EQ(user.asked, each.asked);
        if (user.asked.starts_with("1850")) {
            EXPECT_EQ(user.last_text, L"Can't delete 'tree': Not now");
        }
        EXPECT_EQ(asked(), each.requests);
        EXPECT_EQ(place->get_items().size(), each.left);
        if (each.left == 0) {
            // Of a tree that goes to the Trash whole only the top counts.
            EXPECT_EQ(progress.total, 5U);
            EXPECT_EQ(progress.done, each.permanent ? 5U : 2U);
            EXPECT_TRUE(progress.shown.ends_with(L"1 Deleting 'file'|"));
        }
        folder->delete_item(place, false);
    }
}

TEST_F(deletions, mean_the_items_that_were_selected) {
    // Two of one name lie in the Trash, where the second one is to be deleted for good.
    for (int count = 0; count < 2; ++count) {
        folder->delete_item(folder->create_file(L"twin"), true);
    }
    const auto both = records(*trash);
    ASSERT_EQ(both.size(), 2U);
    transfer_test::scripted_progress progress;
    transfer_test::scripted_prompt user;
    CItemsDeletion(trash, true, progress, user).run({both[1]});
    const auto left = records(*trash);
    ASSERT_EQ(left.size(), 1U);
    EXPECT_EQ(left[0].get_id(), both[0].get_id());
}

TEST_F(deletions, are_taken_back) {
    for (const auto& item : folder->get_items()) {
        folder->delete_item(item, true);
    }
    selection both{trash, shell::CItemIDList(), records(*trash)};
    ASSERT_EQ(both.records.size(), 2U);
    EXPECT_EQ(restore_selection({folder, {}, both.records}), E_INVALIDARG);
    EXPECT_EQ(restore_selection({trash, {}, {}}), E_INVALIDARG);
    // What fails ends it: those before are back, and are not asked for again.
    control.fault({{"kind", "error"},
                   {"action", "restore_file_from_trash"},
                   {"type", "0"},
                   {"name", "Refused"},
                   {"description", "Not now"}});
    EXPECT_EQ(support::failure_of([&] { restore_selection(both); }), L"Refused: Not now");
    EXPECT_EQ(folder->get_items().size(), 1U);
    both.records = records(*trash);
    EXPECT_EQ(restore_selection(both), S_OK);
    EXPECT_EQ(asked(), "restore_file_from_trash");
    EXPECT_EQ(folder->get_items().size(), 2U);
    EXPECT_TRUE(trash->get_items().empty());
}

TEST_F(deletions, run_on_a_thread_of_their_own) {
    const com::apartment apartment;
    const selection all{folder, shell::CItemIDList(), records(*folder)};
    selection one = all;
    one.records.erase(one.records.begin());
    selection none = all;
    none.records.clear();
    EXPECT_EQ(delete_selection(none, nullptr, true), E_INVALIDARG);

    const auto answer = [](const wchar_t* caption, const wchar_t* text, int button) {
        return std::jthread([=] {
            const HWND box = support::await_dialog(caption);
            EXPECT_EQ(support::message_of(box), text);
            EXPECT_EQ(support::icon_of(box), LoadIconW(nullptr, IDI_EXCLAMATION));
            EXPECT_TRUE(support::answer_box(box, button));
        });
    };
    {
        const auto user =
            answer(L"Delete Multiple Items",
                   L"Are you sure you want to move these 2 items to the Trash?", IDNO);
        EXPECT_EQ(delete_selection(all, nullptr, false), S_FALSE);
    }
    {
        const auto user =
            answer(L"Delete File", L"Are you sure you want to move this file to the Trash?", IDYES);
        EXPECT_EQ(delete_selection(one, nullptr, false), S_OK);
    }
    EXPECT_TRUE(support::eventually([&] { return folder->get_items().size() == 1; }));

    // Its boxes stand on the progress dialog, and what it is asked for goes on after an answer.
    control.fault({{"kind", "error"},
                   {"action", "move_dir_to_trash"},
                   {"type", "0"},
                   {"name", "Refused"},
                   {"description", "Not now"}});
    selection tree = all;
    tree.records.pop_back();
    EXPECT_EQ(delete_selection(tree, nullptr, true), S_OK);
    const HWND box = support::await_dialog(L"Error");
    EXPECT_EQ(support::message_of(box), L"Can't delete 'tree': Not now");
    EXPECT_EQ(support::text_of(GetWindow(box, GW_OWNER)), L"Deleting...");
    EXPECT_TRUE(support::answer_box(box, IDRETRY));
    EXPECT_TRUE(support::eventually([&] { return folder->get_items().empty(); }));
    EXPECT_TRUE(support::eventually([] { return !support::find_dialog(L"Deleting..."); }));
}

} // namespace

} // namespace transfer
