#include "virtual_files.h"
#include "wrapper_test.h"

#include "com/module_lock.h"
#include "transfer/descriptor_items/filedescriptor_file.h"
#include "transfer/descriptor_items/filedescriptor_wrapper.h"
#include "transfer/local_items/hdrop_directory.h"
#include "transfer/local_items/hdrop_file.h"
#include "transfer/local_items/hdrop_wrapper.h"

#include <functional>
#include <string_view>

namespace transfer {

namespace {

using Microsoft::WRL::ComPtr;
using support::failure_of;
using transfer_test::tree_of;
using transfer_test::virtual_file;
using transfer_test::virtual_files;
using transfer_test::virtual_folder;

/// A data object with these files. A path that ends in "/" is one of a folder.
ComPtr<virtual_files> source_of(const std::vector<std::wstring>& paths) {
    auto source = com::make<virtual_files>();
    for (const std::wstring& path : paths) {
        if (path.ends_with(L'/')) {
            source->files.push_back(virtual_folder(path.substr(0, path.size() - 1)));
        } else {
            source->files.push_back({.path = path});
        }
    }
    return source;
}

std::shared_ptr<vfs::file> first_file(virtual_files& source) {
    CFILEDESCRIPTORWrapper wrapper(&source, source.descriptors().get());
    return std::dynamic_pointer_cast<vfs::file>(wrapper.get_items().front());
}

TEST(descriptor_items, stand_where_the_table_says_or_are_left_out_with_a_text) {
    const std::wstring name(259, L'n');

    struct {
        std::vector<std::wstring> paths;
        std::wstring tree;
        std::wstring left_out;
    } const cases[] = {
        {{L"b", L"d/", L"d\\z", L"a", L"d\\e/", L"d\\e\\f", L"d\\y"}, L"b d(z e(f) y) a", L""},
        {{L"d\\e\\f", L"d\\e/", L"D", L"d/"}, L"D d(e(f))", L""},
        {{L"a\\b.txt"}, L"", L"'a\\b.txt': The folder that holds it is missing."},
        {{L"x\\d/", L"x\\d\\f"},
         L"",
         L"'x\\d': The folder that holds it is missing.\n"
         L"'x\\d\\f': The folder that holds it is missing."},
        {{L"f", L"f\\g", L"f\\d/"},
         L"f",
         L"'f\\g': It lies in what is no folder.\n'f\\d': It lies in what is no folder."},
        {{L"f", L"F", L"f", L"d/", L"f/", L"d/"},
         L"f F d()",
         L"'f': Another item has the same name.\n'd': Another item has the same name."},
        {{L"..", L".", L"", L"\\f", L"f\\", L"C:", L"d/", L"d\\..\\f", L"d\\\\f", L"a/b", L"C:f"},
         L"d() C:f",
         L"'..': No item can have this name.\n'.': No item can have this name.\n"
         L"'': No item can have this name.\n'\\f': No item can have this name.\n"
         L"'f\\': No item can have this name.\n'C:': No item can have this name.\n"
         L"'d\\..\\f': No item can have this name.\n'd\\\\f': No item can have this name.\n"
         L"'a/b': No item can have this name."},
        {{name, name + L"n"},
         name,
         L"'" + name.substr(0, 30) + L"..." + name.substr(0, 60) + L"': The name is too long."},
    };

    for (const auto& one : cases) {
        const auto source = source_of(one.paths);
        CFILEDESCRIPTORWrapper wrapper(source.Get(), source->descriptors().get());
        EXPECT_EQ(tree_of(wrapper), one.tree);
        EXPECT_EQ(tree_of(wrapper), one.tree);
        EXPECT_EQ(wrapper.take_refusals(),
                  (one.left_out.empty() ? L"" : L"These items are left out:\n\n") + one.left_out);
        EXPECT_EQ(wrapper.take_refusals(), L"");
    }
    // The bit of a directory counts only where the attributes do.
    const auto source = source_of({L"f/"});
    source->files.front().flags = 0;
    EXPECT_NE(first_file(*source.Get()), nullptr);
}

TEST(descriptor_items, are_read_from_no_more_than_the_block) {
    const auto source = source_of({L"a", L"b", L"..", L"d/", L"d\\e"});
    const com::unique_global whole = source->descriptors();
    const auto bytes = com::global_lock(whole.get()).bytes();
    for (std::size_t size = 1; size < bytes.size(); size += 59) {
        const com::unique_global part = com::make_global(size, GHND);
        std::memcpy(com::global_lock(part.get()).bytes().data(), bytes.data(), size);
        CFILEDESCRIPTORWrapper wrapper(source.Get(), part.get());
        const std::size_t held = size < 4 ? 0 : (GlobalSize(part.get()) - 4) / 592;
        EXPECT_EQ(wrapper.get_items().size(), held - (held > 2 ? 1 : 0)) << size;
        EXPECT_NE(wrapper.take_refusals(), L"");
    }
    // A count as large as can be, and more left out than a message can name.
    auto many = source_of(std::vector<std::wstring>(30, L".."));
    const com::unique_global block = many->descriptors();
    *reinterpret_cast<UINT*>(com::global_lock(block.get()).bytes().data()) = ~0U;
    CFILEDESCRIPTORWrapper wrapper(many.Get(), block.get());
    const std::wstring text = wrapper.take_refusals();
    EXPECT_TRUE(
        text.starts_with(L"These items are left out:\n\n'..': No item can have this name.\n"))
        << text;
    EXPECT_TRUE(text.ends_with(L"\nFurther items: " + std::to_wstring(~0U - 30 + 20))) << text;
}

TEST(descriptor_items, deliver_what_the_source_has_and_never_call_a_part_the_whole) {
    const auto all = std::string(50'000, 'x') + "end";

    struct {
        const char* what;
        virtual_file file;
        std::size_t delivered;
        bool whole;
    } const cases[] = {
        {"honest", {.path = L"f"}, 50'003, true},
        {"in pieces", {.path = L"f", .piece = 777}, 50'003, true},
        {"slow",
         {.path = L"f", .piece = 20'000, .delay = std::chrono::milliseconds(50)},
         50'003,
         true},
        {"promises less", {.path = L"f", .claimed_size = 7}, 50'003, true},
        {"promises more", {.path = L"f", .claimed_size = 50'004}, 50'003, false},
        {"dies", {.path = L"f", .dies_at = 40'000, .piece = 9'000}, 40'000, false},
        {"dies at once", {.path = L"f", .dies_at = 0}, 0, false},
    };

    for (auto one : cases) {
        SCOPED_TRACE(one.what);
        one.file.content = all;
        const auto source = com::make<virtual_files>();
        source->files = {one.file};
        const auto file = first_file(*source.Get());
        EXPECT_EQ(file->get_size(), one.file.claimed_size.value_or(50'003));
        file->open(vfs::modeRead, 0);
        std::string buffer(16'384, ' ');
        std::string content;
        const auto read = [&] {
            const auto count = file->read(buffer.data(), 16'384);
            content += buffer.substr(0, count);
            return count;
        };
        const std::wstring end = failure_of([&] {
            while (read() != 0) {
            }
        });
        EXPECT_EQ(content, all.substr(0, one.delivered));
        const std::wstring broken = L"Read failed: Read of 16384 bytes from 'f' failed: Stream "
                                    L"operation call failed";
        EXPECT_EQ(end, one.whole ? L"none" : broken);
        // Nor when the user wants it again.
        EXPECT_EQ(failure_of(read), end);
        file->close(0);
        EXPECT_EQ(source->openings, 2);
    }
    EXPECT_EQ(com::module_lock::count(), 0);
}

TEST(descriptor_items, fail_with_the_words_of_each_step) {
    const auto source = source_of({L"d/", L"d\\f"});
    virtual_file& there = source->files.back();
    const auto file = std::make_shared<CFILEDESCRIPTORFile>(
        source.Get(),
        std::make_shared<descriptor_group>(source.Get(),
                                           com::global_lock(source->descriptors().get()).bytes()),
        1);
    char byte = 0;
    const auto size = [&] {
        file->get_size();
    };
    const auto open = [&] {
        file->open(vfs::modeRead, 0);
    };
    EXPECT_EQ(failure_of([&] { file->close(0); }),
              L"Stream close failed: Stream 'd\\f' is not opened");
    EXPECT_EQ(failure_of([&] { file->read(&byte, 1); }),
              L"Read failed: Read from 'd\\f' failed: Stream is not opened");
    EXPECT_EQ(failure_of([&] { file->seek(2, vfs::seek_beginning); }),
              L"Seek failed: Seek of stream 'd\\f' to 2 from beginning failed: stream not opened");
    there.medium = TYMED_HGLOBAL;
    EXPECT_EQ(failure_of(open),
              L"Stream open failed: Stream 'd\\f' can't be opened by unknown reason, mode=1");
    EXPECT_EQ(failure_of(size), L"Get size failed: Can't get size: Error opening stream 'd\\f'");
    there.medium = TYMED_NULL;
    EXPECT_EQ(failure_of(open), L"Stream open failed: Stream 'd\\f' can't be opened, mode=1");
    EXPECT_EQ(failure_of(size), L"Get size failed: Can't get size: Error opening stream 'd\\f'");
    there.medium = TYMED_ISTREAM;
    there.claimed_size = -1;
    EXPECT_EQ(failure_of(size),
              L"Get size failed: Can't get size of 'd\\f': Stream operation call failed");
    open();
    EXPECT_EQ(failure_of(open), L"Stream open failed: Stream 'd\\f' already opened, mode=1");
    EXPECT_EQ(failure_of([&] { file->seek(-2, vfs::seek_current); }),
              L"Seek failed: Seek of stream 'd\\f' to -2 from current failed: stream operation "
              L"call failed");

    const auto group_of = [&](IDataObject* data, HGLOBAL block) {
        return failure_of([&] { const CFILEDESCRIPTORWrapper wrapper(data, block); });
    };
    const std::wstring wrapper = L"Internal error: CFILEDESCRIPTORWrapper::CFILEDESCRIPTORWrapper(";
    EXPECT_EQ(group_of(nullptr, nullptr), wrapper + L" pDataObj, hGlobal ): pDataObj is NULL");
    EXPECT_EQ(group_of(source.Get(), nullptr), wrapper + L" pDataObj, hGlobal ): hGlobal is NULL");
    EXPECT_EQ(group_of(source.Get(), com::make_global(0, GHND).get()),
              wrapper + L"pDataObj,hGlobal): Out of memory");
    const auto group =
        std::make_shared<descriptor_group>(source.Get(), std::span<const std::byte>());
    for (const std::wstring name : {L"CFILEDESCRIPTORDirectory", L"CFILEDESCRIPTORFile"}) {
        const auto make = [&](IDataObject* data, const descriptor_group_ptr& table) {
            return failure_of([&] {
                if (name.ends_with(L"File")) {
                    const CFILEDESCRIPTORFile made(data, table, 0);
                } else {
                    const CFILEDESCRIPTORDirectory made(data, table, descriptor_table::root);
                }
            });
        };
        const std::wstring start =
            filled(L"Internal error: %1%::%1%( pDataObj, pFGD, nIndex ) : ", {name});
        EXPECT_EQ(make(nullptr, group), start + L"pDataObj is NULL");
        EXPECT_EQ(make(source.Get(), nullptr), start + L"pFGD is NULL");
        EXPECT_EQ(make(source.Get(), group),
                  name.ends_with(L"File") ? start + L"nIndex is out of range" : L"none");
    }
}

TEST(sources, refuse_what_they_do_not_offer) {
    const auto source = source_of({L"d/", L"f"});
    const auto group = std::make_shared<descriptor_group>(
        source.Get(), com::global_lock(source->descriptors().get()).bytes());
    CFILEDESCRIPTORFile virtual_one(source.Get(), group, 1);
    CHDROPFile local_one(L"C:\\f");
    CFILEDESCRIPTORWrapper virtual_all(source.Get(), source->descriptors().get());
    CFILEDESCRIPTORDirectory virtual_folder_of(source.Get(), group, 0);
    CHDROPWrapper local_all(transfer_test::dropped_paths({}).get());
    CHDROPDirectory local_folder(L"C:\\windows", nullptr);
    bool flag = false;

    // With those who do offer it: h and H for the local wrapper and directory, d and D for the
    // virtual ones; f and F for the local and the virtual file.
    struct {
        std::wstring text;
        std::string offered_by;
        std::function<void(vfs::item&)> call;
    } const of_items[] = {
        {L"get_name()", "HDfF",
         [](vfs::item& i) {
             i.get_name();
         }},
        {L"get_id()", "",
         [](vfs::item& i) {
             i.get_id();
         }},
        {L"get_path()", "",
         [](vfs::item& i) {
             i.get_path();
         }},
        {L"get_description()", "",
         [](vfs::item& i) {
             i.get_description();
         }},
        {L"set_description(description)", "",
         [](vfs::item& i) {
             i.set_description(L"");
         }},
        {L"get_thumbnail()", "",
         [](vfs::item& i) {
             i.get_thumbnail();
         }},
        {L"get_access()", "H",
         [](vfs::item& i) {
             i.get_access();
         }},
        {L"set_access(access)", "",
         [](vfs::item& i) {
             i.set_access(0);
         }},
        {L"get_link()", "fF",
         [](vfs::item& i) {
             i.get_link();
         }},
        {L"get_creation_date()", "fF",
         [](vfs::item& i) {
             i.get_creation_date();
         }},
        {L"get_delete_date()", "F",
         [](vfs::item& i) {
             i.get_delete_date();
         }},
        {L"restore()", "",
         [](vfs::item& i) {
             i.restore();
         }},
    };

    const std::pair<std::wstring, std::function<void(vfs::directory&)>> of_directories[] = {
        {L"rename_item(name, new_name)",
         [](auto& d) {
             d.rename_item(L"", L"");
         }},
        {L"rename_item(item, new_name)",
         [](auto& d) {
             d.rename_item(vfs::item_ptr(), L"");
         }},
        {L"delete_item(name)",
         [](auto& d) {
             d.delete_item(L"", false);
         }},
        {L"delete_item(item)",
         [](auto& d) {
             d.delete_item(vfs::item_ptr(), false);
         }},
        {L"create_file(name)",
         [](auto& d) {
             d.create_file(L"");
         }},
        {L"create_file_alloc(name, size)",
         [](auto& d) {
             d.create_file_alloc(L"", 0);
         }},
        {L"create_and_open_file(name, mode, size)",
         [](auto& d) {
             d.create_and_open_file(L"", 6, 0);
         }},
        {L"create_directory(name)",
         [](auto& d) {
             d.create_directory(L"");
         }},
        {L"can_share_with(username, bEmail)",
         [&](auto& d) {
             d.can_share_with(L"", flag);
         }},
        {L"sharing(sharewithuser_id)",
         [](auto& d) {
             d.sharing(1);
         }},
        {L"set_share_mode(sharewithuser_id, mode)",
         [](auto& d) {
             d.set_share_mode(1, 0);
         }},
        {L"delete_sharing_with_user(sharedfolder_id)",
         [](auto& d) {
             d.delete_sharing_with_user(1);
         }},
        {L"get_sharewith_items()",
         [](auto& d) {
             d.get_sharewith_items();
         }},
        {L"find_sharewith_item_by_id(id)",
         [](auto& d) {
             d.find_sharewith_item_by_id(1);
         }},
        {L"find_sharewith_item_by_userid(sharewithuser_id)",
         [](auto& d) {
             d.find_sharewith_item_by_userid(1);
         }},
        {L"email_for_sharing(email)",
         [](auto& d) {
             d.email_for_sharing(L"");
         }},
    };

    struct {
        std::wstring text;
        std::string offered_by;
        std::function<void(vfs::file&)> call;
    } const of_files[] = {
        {L"copy( vfs::item_ptr, bool)", "F",
         [](vfs::file& f) {
             f.copy(nullptr, false);
         }},
        {L"get_price()", "",
         [](vfs::file& f) {
             f.get_price();
         }},
        {L"set_price(price)", "",
         [](vfs::file& f) {
             f.set_price(1);
         }},
        {L"is_bof()", "f",
         [](vfs::file& f) {
             f.is_bof();
         }},
        {L"is_eof()", "f",
         [](vfs::file& f) {
             f.is_eof();
         }},
        {L"get_pos()", "f",
         [](vfs::file& f) {
             f.get_pos();
         }},
        {L"write(pdata, len)", "f",
         [](vfs::file& f) {
             f.write("", 0);
         }},
        {L"set_modification_date(time)", "",
         [](vfs::file& f) {
             f.set_modification_date(1);
         }},
        {L"set_attributes(attr)", "",
         [](vfs::file& f) {
             f.set_attributes(0);
         }},
    };

    const auto expect = [](const std::wstring& name, const std::wstring& text, bool offered,
                           const auto& call) {
        const std::wstring failure = failure_of(call);
        const std::wstring refusal =
            L"Internal error: " + name + L"::" + text + L" is not implemented";
        EXPECT_EQ(failure == refusal, !offered) << testing::PrintToString(refusal);
        EXPECT_EQ(failure.ends_with(L"is not implemented"), !offered);
    };
    const auto expect_item = [&](const std::wstring& name, char letter, vfs::item& item) {
        for (const auto& [text, offered_by, call] : of_items) {
            expect(name, text, offered_by.find(letter) != std::string::npos,
                   [&, &run = call] { run(item); });
        }
    };
    const auto expect_directory = [&](const std::wstring& name, char letter, vfs::directory& item) {
        expect_item(name, letter, item);
        for (const auto& [text, call] : of_directories) {
            expect(name, text, false, [&, &run = call] { run(item); });
        }
        EXPECT_EQ(item.get_type(), vfs::type_directory);
        EXPECT_TRUE(item.is_own_directory());
        item.set_folder_flags(7);
        EXPECT_FALSE(item.is_shared() || item.is_home_folder() || item.is_root_directory() ||
                     item.get_folder_flags() != 0);
    };
    const auto expect_file = [&](const std::wstring& name, char letter, vfs::file& item) {
        expect_item(name, letter, item);
        for (const auto& [text, offered_by, call] : of_files) {
            expect(name, text, offered_by.find(letter) != std::string::npos,
                   [&, &run = call] { run(item); });
        }
        EXPECT_TRUE(item.get_direct_link().empty() && item.get_attributes() == 0);
    };
    expect_directory(L"CHDROPWrapper", 'h', local_all);
    expect_directory(L"CHDROPDirectory", 'H', local_folder);
    expect_directory(L"CFILEDESCRIPTORWrapper", 'd', virtual_all);
    expect_directory(L"CFILEDESCRIPTORDirectory", 'D', virtual_folder_of);
    expect_file(L"CHDROPFile", 'f', local_one);
    expect_file(L"CFILEDESCRIPTORFile", 'F', virtual_one);
    EXPECT_EQ(virtual_one.get_creation_date() + virtual_one.get_access_date() +
                  virtual_one.get_modification_date() + virtual_one.get_delete_date(),
              0);
}

} // namespace

} // namespace transfer
