#include "store_test.h"
#include "vfs_quilldeck/items/shared_items.h"

#include <functional>
#include <string>

namespace vfs_quilldeck {

namespace {

class remote_directory : public store_test {
protected:
    /// A new folder in the root of the demo account.
    directory_ptr make_folder(const std::wstring& name) {
        auto made = as_directory(root_of(session)->create_directory(name));
        control.reset();
        return made;
    }

    client session = sign_in();
};

TEST_F(remote_directory, asks_the_store_only_where_its_cache_cannot_answer) {
    const auto folder = make_folder(L"Lookups");
    vfs::item_ptr found;

    const struct {
        std::function<void()> act;
        std::string requests;
    } steps[] = {
        // An empty cache is no filled one.
        {[&] { EXPECT_THROW(folder->find_item_by_name(L"a", false), exception); }, "list_dir"},
        {[&] { EXPECT_THROW(folder->find_item_by_id(L"a", true), exception); }, "list_dir"},
        {[&] { folder->create_directory(L"First"); }, "create_dir list_dir"},
        {[&] { folder->create_directory(L"Second"); }, "create_dir list_dir"},
        {[&] { folder->find_item_by_name(L"fIRST", false); }, ""},
        {[&] { EXPECT_THROW(folder->find_item_by_name(L"a", false), exception); }, "list_dir"},
        {[&] { folder->find_item_by_name(L"First", true); }, "list_dir"},
        // A refusal leaves the cache as it is, a change clears it, and a deletion thins it.
        {[&] { EXPECT_THROW(folder->create_directory(L"SECOND"), exception); }, "create_dir"},
        {[&] { EXPECT_THROW(folder->rename_item(L"Second", L"first"), exception); }, "rename_dir"},
        {[&] { found = folder->find_item_by_name(L"Second", false); }, ""},
        {[&] { EXPECT_EQ(folder->find_known_item_by_id(found->get_id()), found); }, ""},
        {[&] { EXPECT_EQ(folder->find_known_item_by_id(L"a"), nullptr); }, ""},
        {[&] { folder->rename_item(L"second", L"Third"); }, "rename_dir"},
        {[&] { EXPECT_EQ(folder->find_known_item_by_id(found->get_id()), nullptr); }, ""},
        {[&] { folder->find_item_by_name(L"Third", false); }, "list_dir"},
        {[&] { folder->delete_item(L"third", true); }, "move_dir_to_trash"},
        {[&] { folder->find_item_by_name(L"First", false); }, ""},
        {[&] { EXPECT_THROW(folder->find_item_by_name(L"Third", false), exception); }, "list_dir"},
        {[&] { folder->create_file_alloc(L"f", 5); }, "create_file"},
        {[&] { folder->delete_item(L"F", false); }, "list_dir remove_file"},
        {[&] { folder->delete_item(L"First", false); }, "remove_dir"},
    };

    for (const auto& step : steps) {
        step.act();
        EXPECT_EQ(asked(), step.requests) << "at step " << &step - steps;
    }
    EXPECT_EQ(failure_of([&] { folder->find_item_by_name(L"a", false); }),
              L"Item not found: File system error: item 'a' not found in directory 'Lookups'");
    // U+0800 is lost on the way, so the new folder is not found under its name.
    EXPECT_EQ(failure_of([&] { folder->create_directory(L"x\x800y"); }),
              L"Error creating directory: File system error: item 'x\x800y' not found in directory "
              L"'Lookups'");
}

TEST_F(remote_directory, finds_the_first_of_its_children_with_a_key) {
    const auto folder = make_folder(L"Equals");
    answer(
        "<R><Directory><ID>1</ID><Name>a</Name></Directory><Directory><ID>2</ID><Name>\u00c4</Name>"
        "</Directory><File><ID>dir_1</ID><Name>A</Name></File></R>");
    const auto items = folder->get_items();
    ASSERT_EQ(items.size(), 3u);
    control.reset();
    EXPECT_EQ(folder->find_item_by_name(L"A", false), items[0]);
    EXPECT_EQ(folder->find_item_by_id(L"DIR_1", false), items[0]);
    EXPECT_EQ(folder->find_item_by_name(L"\u00c4", false), items[1]);
    EXPECT_EQ(asked(), "");
    // Each of the two that share an id goes by itself.
    answer("<R></R>");
    folder->delete_item(items[0], false);
    EXPECT_EQ(folder->find_known_item_by_id(L"dir_1"), items[2]);
    folder->delete_item(items[2], false);
    EXPECT_EQ(folder->find_known_item_by_id(L"dir_1"), nullptr);
    EXPECT_EQ(folder->find_known_item_by_id(L"dir_2"), items[1]);
}

TEST_F(remote_directory, reads_the_fields_of_a_listing) {
    const auto folder = make_folder(L"Fields");
    answer(
        "<Result><File><ID>f1</ID><Name>n</Name><Link>l</Link><DirectLink>d</DirectLink>"
        "<Location>o</Location><Description>t</Description><Access>2</Access><Price>1.5</Price>"
        "<Size>5000000000</Size><DateAccessed>0</DateAccessed><DateModified>-5</DateModified>"
        "<DateDeleted>7</DateDeleted><DateCreated>7</DateCreated></File>"
        "<Directory></Directory><Directory><Name></Name></Directory>"
        "<Directory><ID>d1</ID><Access>x</Access><Shared>True</Shared>"
        "<IsHomeFolder>true</IsHomeFolder><HasSubfolders>True</HasSubfolders>"
        "<DateCreated>8</DateCreated><DateDeleted>9</DateDeleted></Directory><File><Size>x</Size></"
        "File></Result>");
    const auto items = folder->get_items();
    ASSERT_EQ(items.size(), 4u);
    EXPECT_EQ(items[0]->get_id(), L"dir_");
    EXPECT_EQ(items[0]->get_creation_date(), vfs::time_unknown);
    const auto& directory = dynamic_cast<vfs::directory&>(*items[1]);
    EXPECT_EQ(directory.get_access(), vfs::access_private);
    EXPECT_TRUE(directory.is_shared() && directory.has_subfolders());
    EXPECT_FALSE(directory.is_home_folder() || directory.is_root_directory());
    EXPECT_EQ(directory.get_creation_date(), 8);
    EXPECT_EQ(directory.get_delete_date(), 9);

    auto& file = dynamic_cast<vfs::file&>(*items[2]);
    EXPECT_EQ(file.get_id(), L"f1");
    EXPECT_EQ(file.get_link() + file.get_direct_link() + file.get_description(), L"ldt");
    EXPECT_EQ(file.get_size(), 5'000'000'000);
    EXPECT_EQ(file.get_price(), 1.5);
    EXPECT_EQ(file.get_access_date(), vfs::time_unknown);
    EXPECT_EQ(file.get_modification_date(), -5);
    EXPECT_EQ(file.get_delete_date(), 7);
    EXPECT_EQ(file.get_creation_date(), vfs::time_unknown);
    EXPECT_EQ(dynamic_cast<vfs::file&>(*items[3]).get_size(), 0);

    // What a share lists is neither shared nor deleted by the user.
    shared_directory share(item_link(session, share_route(L"5", L"6")), {});
    const auto theirs = share.get_items();
    ASSERT_EQ(theirs.size(), 4u);
    EXPECT_FALSE(as_directory(theirs[1])->is_shared());
    EXPECT_EQ(theirs[1]->get_delete_date(), vfs::time_unknown);
    EXPECT_EQ(theirs[2]->get_delete_date(), vfs::time_unknown);

    // What the store refused is not what an item tells.
    control.reset();
    control.fault({{"kind", "error"}, {"count", "100"}});
    EXPECT_THROW(file.set_price(3), exception);
    EXPECT_THROW(file.set_description(L"v"), exception);
    EXPECT_EQ(file.get_price(), 1.5);
    EXPECT_EQ(file.get_description(), L"t");
}

TEST_F(remote_directory, is_walked_to_by_a_path_and_made_where_it_is_missing) {
    EXPECT_EQ(failure_of([&] { session.get_directory(L"", true); }),
              L"Empty path provided: File system error: empty path provided");
    EXPECT_THROW(session.get_directory(L"Walk/a", false), exception);
    asked();
    const vfs::item_ptr made = session.get_directory(L"Walk/a\\b", true);
    EXPECT_EQ(asked(), "has_share_folders list_dir create_dir has_share_folders list_dir "
                       "list_dir create_dir list_dir list_dir create_dir list_dir");
    EXPECT_EQ(made->get_path(), L"Walk/a/b");
    EXPECT_EQ(session.get_directory(L"/walk/A/b/", false)->get_id(), made->get_id());
    asked();
    session.get_directory(L"Walk/a", false);
    EXPECT_EQ(asked(), "has_share_folders list_dir list_dir") << "the walk begins at a fresh root";
    dynamic_cast<vfs::directory&>(*session.get_directory(L"Walk", false)).create_file(L"f");
    EXPECT_EQ(failure_of([&] { session.get_directory(L"Walk/f/x", true); }),
              L"Directory not found and can not be created: File system error: directory "
              L"'Walk/f/x' not found and can not be created");
}

} // namespace

} // namespace vfs_quilldeck
