#include "store_test.h"

#include <algorithm>
#include <vector>

namespace vfs_quilldeck {

namespace {

class remote_directory : public store_test {
protected:
    /// A new folder in the root of the demo account.
    std::shared_ptr<vfs::directory> make_folder(const std::wstring& name) {
        auto made =
            std::dynamic_pointer_cast<vfs::directory>(root_of(session)->create_directory(name));
        control.reset();
        return made;
    }

    client session = sign_in();
};

TEST_F(remote_directory, asks_the_store_only_where_its_cache_cannot_answer) {
    const auto folder = make_folder(L"Lookups");
    EXPECT_TRUE(folder->get_items().empty());
    EXPECT_EQ(failure_of([&] { folder->find_item_by_name(L"a", false); }),
              L"Item not found: File system error: item 'a' not found in directory 'Lookups'");
    EXPECT_THROW(folder->find_item_by_id(L"a", true), vfs::item_not_found_exception);
    EXPECT_EQ(asked(), "list_dir list_dir list_dir");

    const vfs::item_ptr first = folder->create_directory(L"First \u00C4");
    const vfs::item_ptr second = folder->create_directory(L"Second");
    EXPECT_EQ(asked(), "create_dir list_dir create_dir list_dir");
    EXPECT_EQ(folder->find_item_by_name(L"fIRST \u00C4", false)->get_id(), first->get_id());
    EXPECT_EQ(folder->find_item_by_id(L"D" + second->get_id().substr(1), false), second);
    EXPECT_EQ(asked(), "");
    EXPECT_THROW(folder->find_item_by_name(L"First \u00E4", false), vfs::item_not_found_exception);
    EXPECT_EQ(folder->find_item_by_name(L"second", true)->get_name(), L"Second");
    EXPECT_EQ(asked(), "list_dir list_dir");

    // A name clash changes nothing, neither there nor here.
    EXPECT_THROW(folder->create_directory(L"SECOND"), vfs::item_already_exists_exception);
    EXPECT_THROW(folder->rename_item(L"Second", L"first \u00C4"),
                 vfs::item_already_exists_exception);
    EXPECT_EQ(folder->find_item_by_name(L"Second", false)->get_type(), vfs::type_directory);
    EXPECT_EQ(asked(), "create_dir rename_dir");

    folder->rename_item(L"second", L"Third");
    EXPECT_EQ(second->get_name(), L"Second");
    EXPECT_THROW(folder->find_item_by_name(L"Second", false), vfs::item_not_found_exception);
    EXPECT_EQ(folder->find_item_by_name(L"Third", false)->get_id(), second->get_id());
    EXPECT_EQ(asked(), "rename_dir list_dir");

    // The object of an older listing names the child of the present one.
    folder->delete_item(second, true);
    EXPECT_EQ(folder->find_item_by_name(L"First \u00C4", false)->get_id(), first->get_id());
    EXPECT_EQ(asked(), "move_dir_to_trash");
    EXPECT_THROW(folder->find_item_by_name(L"Third", false), vfs::item_not_found_exception);
    EXPECT_EQ(asked(), "list_dir");
    folder->delete_item(second, false);
    EXPECT_EQ(asked(), "remove_dir");

    const vfs::item_ptr file = folder->create_file_alloc(L"f", 5);
    EXPECT_EQ(dynamic_cast<vfs::file&>(*file).get_size(), 0);
    EXPECT_NE(folder->find_item_by_name(L"F", false), file);
    EXPECT_EQ(asked(), "create_file list_dir");
    folder->rename_item(file, L"g");
    folder->delete_item(L"g", false);
    EXPECT_EQ(asked(), "rename_file list_dir remove_file");
    EXPECT_EQ(failure_of([&] { folder->delete_item(file, false); }).find(L"Not found: "), 0u);
}

TEST_F(remote_directory, sends_names_and_texts_there_and_back) {
    const auto folder = make_folder(L"Texts");
    const std::wstring name = L" a&b=c%41+d;\u00E4\u20AC\x80 <e>\U0001F58B'\"#?[]{}|^`~";
    const vfs::item_ptr made = folder->create_directory(name + L".");
    EXPECT_EQ(made->get_name(), name + L".");
    made->set_description(L"line 1\r\nline 2\\x <b>\t" + name);
    EXPECT_EQ(folder->find_item_by_name(name + L".", true)->get_description(),
              L"line 1\r\nline 2\\x <b>\t" + name);
    EXPECT_EQ(made->get_path(), L"Texts/" + name + L".");
    // U+0800 is lost on the way, so the new folder is not found under its name.
    EXPECT_EQ(failure_of([&] { folder->create_directory(L"x\x800y"); }),
              L"Error creating directory: File system error: item 'x\x800y' not found in directory "
              L"'Texts'");
    EXPECT_NE(folder->find_item_by_name(L"xy", false), nullptr);
}

TEST_F(remote_directory, reads_the_fields_of_a_listing) {
    const auto folder = make_folder(L"Fields");
    answer("<Result><File><ID>f1</ID><Name>n</Name><Link>l</Link><DirectLink>d</DirectLink>"
           "<Location>o</Location><Description>t</Description><Access>2</Access><Price>1.5</Price>"
           "<Size>5000000000</Size><DateAccessed>0</DateAccessed><DateModified>-5</DateModified>"
           "<DateDeleted>7</DateDeleted><DateCreated>7</DateCreated></File>"
           "<Directory></Directory><Directory><Name></Name></Directory>"
           "<Directory><ID>d1</ID><Access>x</Access><Shared>true</Shared>"
           "<IsHomeFolder>True</IsHomeFolder><HasSubfolders>True</HasSubfolders>"
           "<DateCreated>8</DateCreated></Directory><File><Size>x</Size></File></Result>");
    const auto items = folder->get_items();
    ASSERT_EQ(items.size(), 4u);
    EXPECT_EQ(items[0]->get_id(), L"dir_");
    EXPECT_EQ(items[0]->get_creation_date(), vfs::time_unknown);
    const auto& directory = dynamic_cast<vfs::directory&>(*items[1]);
    EXPECT_EQ(directory.get_access(), vfs::access_private);
    EXPECT_FALSE(directory.is_shared());
    EXPECT_TRUE(directory.is_home_folder() && directory.has_subfolders());
    EXPECT_TRUE(directory.is_own_directory() && !directory.is_root_directory());
    EXPECT_EQ(directory.get_creation_date(), 8);
    EXPECT_EQ(directory.get_delete_date(), vfs::time_unknown);
    EXPECT_EQ(directory.get_folder_flags(), vfs::folder_initial);
    EXPECT_EQ(failure_of([&] { items[1]->get_thumbnail(); }),
              L"Internal error: directory::get_thumbnail(): Operation not implemented");

    auto& file = dynamic_cast<vfs::file&>(*items[2]);
    EXPECT_EQ(file.get_id(), L"f1");
    EXPECT_EQ(file.get_link() + file.get_direct_link() + file.get_description(), L"ldt");
    EXPECT_EQ(file.get_size(), 5'000'000'000);
    EXPECT_EQ(file.get_price(), 1.5);
    EXPECT_EQ(file.get_access_date(), vfs::time_unknown);
    EXPECT_EQ(file.get_modification_date(), -5);
    EXPECT_EQ(file.get_delete_date(), 7);
    EXPECT_EQ(file.get_creation_date(), vfs::time_unknown);
    EXPECT_EQ(failure_of([&] { file.is_bof(); }),
              L"Internal error: file::is_bof(): Operation not implemented");
    EXPECT_EQ(dynamic_cast<vfs::file&>(*items[3]).get_size(), 0);

    // What is set is seen at once, but for the access.
    file.set_price(2);
    file.set_description(L"u");
    file.set_access(vfs::access_public);
    control.reset();
    control.fault({{"kind", "error"}, {"count", "100"}});
    EXPECT_THROW(file.set_price(3), exception);
    EXPECT_THROW(file.set_description(L"v"), exception);
    EXPECT_THROW(items[1]->set_description(L"v"), exception);
    EXPECT_EQ(file.get_price(), 2);
    EXPECT_EQ(file.get_description(), L"u");
    EXPECT_EQ(items[1]->get_description(), L"");
    EXPECT_EQ(file.get_access(), vfs::access_hidden);
}

TEST_F(remote_directory, gives_items_that_outlive_it) {
    std::vector<vfs::item_ptr> items;
    {
        client other = sign_in();
        items = root_of(other)->get_items();
    }
    const auto documents = std::ranges::find(items, L"Documents", &vfs::item::get_name);
    ASSERT_NE(documents, items.end());
    const vfs::item_ptr kept = std::move(*documents);
    items.clear();
    EXPECT_EQ(kept->get_path(), L"Documents");
    EXPECT_FALSE(dynamic_cast<vfs::directory&>(*kept).get_items().empty());
}

TEST_F(remote_directory, is_walked_to_by_a_path_and_made_where_it_is_missing) {
    const std::wstring missing =
        L": File system error: directory 'Walk/a' not found and can not be "
        L"created";
    EXPECT_EQ(failure_of([&] { session.get_directory(L"", true); }),
              L"Empty path provided: File system error: empty path provided");
    EXPECT_EQ(failure_of([&] { session.get_directory(L"Walk/a", false); }),
              L"Directory not found and can not be created" + missing);
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

TEST_F(remote_directory, copies_and_moves_files_inside_the_store) {
    const auto from = make_folder(L"From");
    const auto to = make_folder(L"To");
    const vfs::item_ptr item = from->create_and_open_file(L"f", 6, 4);
    auto& file = dynamic_cast<vfs::file&>(*item);
    file.write("1234", 4);
    file.close(1'000'000'000);
    EXPECT_EQ(file.get_modification_date(), 1'000'000'000);
    EXPECT_EQ(file.get_open_mode() + file.get_pos(), 0);
    control.reset();
    file.copy(to, false);
    EXPECT_THROW(file.copy(to, false), vfs::item_already_exists_exception);
    to->delete_item(L"f", false);
    file.copy(to, true);
    EXPECT_EQ(asked(), "copy_file copy_file list_dir remove_file copy_file");
    EXPECT_TRUE(from->get_items().empty());
    const auto moved = std::dynamic_pointer_cast<vfs::file>(to->find_item_by_name(L"F", true));
    EXPECT_EQ(moved->get_id(), file.get_id());
    EXPECT_EQ(moved->get_size(), 4);
    EXPECT_EQ(moved->get_modification_date(), 1'000'000'000);
}

} // namespace

} // namespace vfs_quilldeck
