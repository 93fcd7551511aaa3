#include "store_test.h"
#include "vfs_quilldeck/session/session.h"

namespace vfs_quilldeck {

namespace {

class special_directories : public store_test {
protected:
    static std::wstring names_in(vfs::directory& directory) {
        std::wstring names;
        for (const vfs::item_ptr& item : directory.get_items()) {
            names += item->get_name() + L"|";
        }
        return names;
    }

    static directory_ptr enter(const directory_ptr& from, const std::wstring& name) {
        return as_directory(from->find_item_by_name(name, false));
    }

    static void expect_special(vfs::directory& directory, const std::wstring& id,
                               std::uint32_t flags) {
        directory.set_folder_flags(8);
        EXPECT_EQ(directory.get_folder_flags(), flags);
        EXPECT_EQ(directory.get_id() + directory.get_path(), id);
        EXPECT_TRUE(directory.is_root_directory() && !directory.is_own_directory());
    }

    /// The top of a share or an access that allows to look, and the folder `below` it.
    static void expect_family_of(const directory_ptr& top, const std::wstring& below) {
        for (const auto& one : {top, enter(top, below)}) {
            one->set_folder_flags(8);
            EXPECT_EQ(one->get_folder_flags(), 0u);
            EXPECT_EQ(one->is_root_directory(), one == top);
            EXPECT_FALSE(one->is_own_directory());
            EXPECT_EQ(failure_of([&] { one->create_file(L"x"); }).find(L"No permission: "), 0u);
        }
    }
};

TEST_F(special_directories, stand_at_the_end_of_the_root) {
    client session = sign_in();
    const auto root = root_of(session);
    root->create_directory(L"tRASH");
    auto items = root->get_items();
    ASSERT_GE(items.size(), 3u);
    const auto trash = as_directory(items.back());
    const auto shared = as_directory(*(items.end() - 2));
    EXPECT_EQ(root->find_item_by_name(L"Trash", false)->get_name(), L"tRASH");
    EXPECT_EQ(root->find_item_by_id(L"dir_trash", false), trash);
    EXPECT_EQ(root->find_item_by_name(L"shared FOLDERS", false), shared);
    const auto anna = enter(shared, L"anna");
    asked();

    expect_special(*root, L"dir_root", 1);
    expect_special(*trash, L"dir_trash", 0x80);
    expect_special(*shared, L"dir_shared_folders_container", 0x20);
    expect_special(*anna, L"dir_ud_1002", 0x40);
    EXPECT_EQ(asked(), "");

    for (const auto& [reply, has_shares] :
         {std::pair("<Result>\n\nTrue\n</Result>", true), std::pair("<Result>true</Result>", false),
          std::pair("<Result>True\r</Result>", false), std::pair("<Result>\n</Result>", false)}) {
        control.fault({{"kind", "garbage"}, {"action", "has_share_folders"}, {"body", reply}});
        items = root->get_items();
        EXPECT_EQ(items.back()->get_id(), L"dir_trash");
        EXPECT_EQ((*(items.end() - 2))->get_id() == shared->get_id(), has_shares) << reply;
    }
    root->delete_item(L"trash", false);

    new_profile(L"newcomer", L"secret", L"secret", L"new@quilldeck.example", L"N", L"C");
    client newcomer(L"newcomer", L"secret");
    EXPECT_EQ(newcomer.get_root(), newcomer.get_root());
    EXPECT_EQ(names_in(*root_of(newcomer)), L"Trash|");
}

TEST_F(special_directories, lead_to_what_others_share) {
    client session = sign_in();
    const auto root = root_of(session);
    const auto anna = enter(enter(root, L"Shared Folders"), L"anna");
    const auto photos = enter(anna, L"Photos for you");
    expect_family_of(photos, L"More");
    const auto night = as_file(photos->find_item_by_name(L"Night.jpg", false));
    EXPECT_GT(night->get_thumbnail().size(), 10u);

    // From one share to another, and on to a folder of one's own.
    const auto work = enter(anna, L"Work");
    night->copy(work, false);
    const auto copied = as_file(work->find_item_by_name(L"Night.jpg", true));
    EXPECT_EQ(copied->get_path(), L"Work/Night.jpg");
    copied->copy(root, true);
    EXPECT_THROW(work->find_item_by_name(L"Night.jpg", true), vfs::item_not_found_exception);
    root->delete_item(L"Night.jpg", false);
}

TEST_F(special_directories, are_other_ones_for_a_guest) {
    client guest(L"visitor", L"");
    EXPECT_EQ(guest.get_user_info().user_access_id, L"visitor");
    const auto root = root_of(guest);
    expect_special(*root, L"dir_root", 1);
    EXPECT_EQ(names_in(*root), L"Pictures|");
    const auto pictures = enter(root, L"pictures");
    expect_family_of(pictures, L"Holidays 2026");
    EXPECT_GT(pictures->find_item_by_name(L"Dusk.jpg", false)->get_thumbnail().size(), 10u);
}

} // namespace

} // namespace vfs_quilldeck
