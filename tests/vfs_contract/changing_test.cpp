// What holds of directories in which one can work, and of their files.
#include "contract.h"

#include <ctime>
#include <string>

namespace vfs_contract {

namespace {

constexpr std::int32_t overwrite = vfs::modeWrite | vfs::modeOverwrite;

class changing : public contract {
protected:
    static void write(vfs::file& file, const std::string& content, vfs::time_seconds time) {
        file.write(content.data(), static_cast<std::uint32_t>(content.size()));
        EXPECT_EQ(file.get_pos(), std::ssize(content));
        file.close(time);
    }

    static std::string read(vfs::file& file) {
        std::string content(100, '\0');
        file.open(vfs::modeRead, 0);
        content.resize(file.read(content.data(), 100));
        file.close(0);
        return content;
    }

    const directory_ptr top = here->reach();
};

TEST_P(changing, makes_items_that_others_see) {
    const std::wstring name = L" a&b=c%41+d;\u00E4\u20AC\x80 <e>\U0001F58B'\"#?[]{}|^`~";
    const std::wstring text = L"line 1\r\nline 2\\x <b>\t" + name;
    const vfs::item_ptr folder = top->create_directory(name + L".");
    const file_ptr file =
        std::dynamic_pointer_cast<vfs::file>(top->create_and_open_file(name, overwrite, 5));
    EXPECT_EQ(file->get_open_mode(), overwrite);
    write(*file, "bytes", 1'000'000'000);
    for (const vfs::item_ptr& item : {folder, vfs::item_ptr(file)}) {
        item->set_description(text);
        item->set_access(vfs::access_hidden);
        EXPECT_EQ(item->get_description(), text) << "seen at once";
        EXPECT_EQ(item->get_access(), vfs::access_private) << "seen with the next listing";
        EXPECT_EQ(item->get_path(), top->get_path() + L"/" + item->get_name());
    }
    file->set_price(1.25);

    const directory_ptr again = here->reach();
    for (const vfs::item_ptr& item : {folder, vfs::item_ptr(file)}) {
        const vfs::item_ptr seen = again->find_item_by_id(item->get_id(), false);
        EXPECT_EQ(seen->get_name(), item->get_name());
        EXPECT_EQ(seen->get_description(), text);
        EXPECT_EQ(seen->get_access(), vfs::access_hidden);
        EXPECT_FALSE(seen->get_link().empty());
    }
    const file_ptr seen = find_file(again, name);
    EXPECT_EQ(seen->get_price(), 1.25);
    EXPECT_EQ(seen->get_size(), 5);
    EXPECT_EQ(seen->get_modification_date(), 1'000'000'000);
    EXPECT_EQ(read(*seen), "bytes");
    seen->set_modification_date(1'100'000'000);
    EXPECT_EQ(find_file(here->reach(), name)->get_modification_date(), 1'100'000'000);
}

TEST_P(changing, replaces_what_a_file_holds) {
    const vfs::item_ptr made = top->create_file_alloc(L"f", 3);
    auto& file = dynamic_cast<vfs::file&>(*made);
    EXPECT_EQ(file.get_size(), 0) << "announced is not written";
    const std::time_t before = std::time(nullptr);
    for (const std::string content : {"abc", "", "longer than before"}) {
        file.open(overwrite, std::ssize(content));
        write(file, content, 0);
        EXPECT_EQ(file.get_size(), std::ssize(content));
        EXPECT_GE(file.get_modification_date(), before);
        EXPECT_EQ(read(*find_file(here->reach(), L"f")), content);
    }
    EXPECT_EQ(read(dynamic_cast<vfs::file&>(*top->create_file(L"g"))), "");
}

TEST_P(changing, drops_what_is_abandoned) {
    const file_ptr file =
        std::dynamic_pointer_cast<vfs::file>(top->create_and_open_file(L"f", overwrite, 3));
    write(*file, "old", 1'000'000);
    const file_ptr writer = file->duplicate();
    EXPECT_EQ(writer->get_open_mode(), 0);
    for (int i = 0; i < 2; ++i) {
        writer->open(overwrite, 5);
        EXPECT_EQ(file->get_open_mode(), 0);
        writer->write("other", 5);
        writer->abandon();
        EXPECT_EQ(writer->get_open_mode(), 0);
        EXPECT_THROW(writer->close(0), vfs::exception);
        writer->abandon();
    }
    EXPECT_EQ(writer->get_size(), 3);
    EXPECT_EQ(read(*writer), "old");
    writer->open(vfs::modeRead, 0);
    writer->abandon();
    EXPECT_EQ(read(*find_file(here->reach(), L"f")), "old");
    // The thumbnail and the link of a duplicate take the item's own road.
    EXPECT_EQ(writer->get_link(), file->get_link());
    EXPECT_EQ(writer->get_path(), file->get_path());
}

TEST_P(changing, keeps_names_apart_and_finds_them_without_case) {
    const vfs::item_ptr first = top->create_directory(L"First \u00C4");
    const vfs::item_ptr second = top->create_file(L"Second");
    for (const bool refresh : {false, true}) {
        EXPECT_EQ(top->find_item_by_name(L"fIRST \u00C4", refresh)->get_id(), first->get_id());
        EXPECT_EQ(top->find_item_by_id(L"D" + first->get_id().substr(1), refresh)->get_id(),
                  first->get_id());
        EXPECT_THROW(top->find_item_by_name(L"First \u00E4", refresh),
                     vfs::item_not_found_exception);
        EXPECT_THROW(top->find_item_by_id(L"none", refresh), vfs::item_not_found_exception);
    }
    EXPECT_THROW(top->create_directory(L"SECOND"), vfs::item_already_exists_exception);
    EXPECT_THROW(top->create_file(L"first \u00C4"), vfs::item_already_exists_exception);
    EXPECT_THROW(top->rename_item(L"second", L"first \u00C4"), vfs::item_already_exists_exception);
    EXPECT_THROW(top->rename_item(L"none", L"some"), vfs::item_not_found_exception);

    top->rename_item(L"second", L"Third");
    top->rename_item(first, L"Fourth");
    EXPECT_EQ(second->get_name(), L"Second") << "an item is what it was listed as";
    EXPECT_THROW(top->find_item_by_name(L"Second", false), vfs::item_not_found_exception);
    EXPECT_EQ(top->find_item_by_name(L"Third", false)->get_id(), second->get_id());
    EXPECT_EQ(here->reach()->find_item_by_name(L"Fourth", false)->get_id(), first->get_id());
}

TEST_P(changing, deletes_once_to_the_trash_or_for_good) {
    for (const bool to_trash : {true, false}) {
        const vfs::item_ptr folder = top->create_directory(L"d");
        const vfs::item_ptr file = top->create_file(L"f");
        top->create_file(L"stays");
        top->get_items();
        // By objects of older listings, which mean the children of the present one.
        top->delete_item(folder, to_trash);
        top->delete_item(L"F", to_trash);
        for (const directory_ptr& seen : {top, here->reach()}) {
            EXPECT_EQ(seen->find_item_by_name(L"stays", false)->get_type(), vfs::type_file);
            EXPECT_EQ(seen->get_items().size(), 1U);
            EXPECT_THROW(seen->find_item_by_name(L"d", false), vfs::item_not_found_exception);
            EXPECT_THROW(seen->delete_item(L"f", to_trash), vfs::item_not_found_exception);
        }
        top->delete_item(L"stays", false);
    }
}

TEST_P(changing, copies_and_moves_files_without_their_bytes) {
    const directory_ptr to =
        std::dynamic_pointer_cast<vfs::directory>(top->create_directory(L"To"));
    here->put(L"f", "1234");
    const file_ptr file = find_file(here->reach(), L"f");
    file->copy(to, false);
    EXPECT_THROW(file->copy(to, false), vfs::item_already_exists_exception);
    EXPECT_THROW(file->copy(file, true), vfs::exception);
    EXPECT_EQ(read(*find_file(to, L"f")), "1234");
    EXPECT_EQ(read(*find_file(here->reach(), L"f")), "1234");
    to->delete_item(L"f", false);
    file->copy(to, true);
    const file_ptr moved = find_file(enter(here->reach(), L"To"), L"f");
    EXPECT_EQ(moved->get_id(), file->get_id());
    EXPECT_EQ(moved->get_modification_date(), 1'000'000'000);
    EXPECT_EQ(read(*moved), "1234");
    EXPECT_THROW(here->reach()->find_item_by_name(L"f", false), vfs::item_not_found_exception);
}

INSTANTIATE_TEST_SUITE_P(remote, changing, testing::ValuesIn(remote_implementations()),
                         testing::PrintToStringParamName());

} // namespace

} // namespace vfs_contract
