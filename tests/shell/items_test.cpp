/// Records, lists of them, and what is read from a record alone.
#include "guarded_bytes.h"
#include "signed_in.h"

#include "shell/display_text.h"
#include "shell/extract_icon.h"
#include "shell/file_types.h"
#include "shell/host_process.h"
#include "shell/id_list_bytes.h"
#include "shell/item_attributes.h"
#include "shell/item_order.h"
#include "shell/item_properties.h"
#include "utils/module.h"
#include "vfs_quilldeck/client.h"
#include "vfs_quilldeck/directory.h"
#include "vfs_quilldeck/file.h"

#include <functional>
#include <numeric>

namespace shell {

namespace {

using vfs_quilldeck::directory_fields;
using vfs_quilldeck::file_fields;

class items : public signed_in {
protected:
    PIDLDATA record(const file_fields& fields) const {
        return PIDLDATA(std::make_shared<vfs_quilldeck::file>(link, fields, L"", 0));
    }

    PIDLDATA record(const directory_fields& fields) const {
        return PIDLDATA(std::make_shared<vfs_quilldeck::directory>(link, fields));
    }

    const vfs_quilldeck::item_link link{
        dynamic_cast<vfs_quilldeck::client&>(*vfs_quilldeck::get_client(utils::own_module()))};
};

std::string bytes_of(const ITEMIDLIST* list) {
    const auto entries = entries_of(list);
    return {reinterpret_cast<const char*>(entries.data()), entries.size()};
}

std::string bytes_of(const PIDLDATA& record) {
    return {reinterpret_cast<const char*>(&record), sizeof(record)};
}

TEST_F(items, become_records) {
    constexpr vfs::time_seconds day = 86400;
    const PIDLDATA file = record(file_fields{.id = std::wstring(50, L'7'),
                                             .name = std::wstring(256, L'n') + L".txt",
                                             .size = 5'000'000'000,
                                             .access_date = 0,
                                             .modification_date = day + day / 2});
    EXPECT_EQ(file.cb, 840);
    EXPECT_EQ(file.get_name(), std::wstring(256, L'n') + L".tx") << "259 and a terminator";
    EXPECT_EQ(file.get_id(), std::wstring(49, L'7'));
    EXPECT_EQ(file.get_type_text(), file_types().of_file(L".txt").text);
    EXPECT_EQ(bytes_of(file).substr(2, 6), std::string("\2\0\0\0\0\0", 6));
    EXPECT_EQ(file.size, 5'000'000'000);
    EXPECT_EQ(file.creation_date, -1.0);
    EXPECT_EQ(file.access_date, 0.0);
    EXPECT_EQ(file.modification_date, 25570.5);
    EXPECT_TRUE(file.is_live());

    const PIDLDATA directory = record(directory_fields{.id = L"8",
                                                       .name = L"d.txt",
                                                       .subfolders = true,
                                                       .shared = true,
                                                       .creation_date = day,
                                                       .delete_date = 2 * day});
    EXPECT_EQ(bytes_of(directory).substr(2, 6), std::string("\1\1\1\1\0\0", 6));
    EXPECT_EQ(directory.get_id(), L"dir_8");
    EXPECT_EQ(directory.get_type_text(), file_types().directory_text());
    EXPECT_NE(directory.get_type_text(), L"");
    EXPECT_EQ(directory.size, -1);
    EXPECT_EQ(directory.creation_date, 25570.0);
    EXPECT_EQ(directory.access_date, -1.0);
    EXPECT_EQ(directory.modification_date, -1.0);
    EXPECT_EQ(directory.delete_date, 25571.0);

    EXPECT_EQ(record(file_fields{.name = L"a", .modification_date = 1}),
              record(file_fields{.id = L"2", .name = L"a", .modification_date = 2}));
    EXPECT_NE(record(directory_fields{.name = L"a", .subfolders = true}),
              record(directory_fields{.name = L"a"}));
}

TEST_F(items, form_lists) {
    const PIDLDATA a = record(directory_fields{.id = L"1", .name = L"a"});
    const PIDLDATA b = record(file_fields{.id = L"2", .name = L"b"});
    const CItemIDList head(drive_list().get(), true);
    const CItemIDList below = CItemIDList(a) + CItemIDList(b);
    const auto flat = (head + below).to_list();
    EXPECT_EQ(bytes_of(flat.get()), bytes_of(drive_list().get()) + bytes_of(a) + bytes_of(b));
    EXPECT_EQ(std::memcmp(CItemIDList().to_list().get(), "\0\0", 3), 0);
    EXPECT_EQ(below.path_string(), L"a\\b");
    EXPECT_EQ(below.last(), b);
    EXPECT_EQ(CItemIDList(below.to_list().get(), false), below);
    EXPECT_EQ(below + head, below) << "a second head is dropped";
    EXPECT_NE(head + below, below);
    EXPECT_NE(below, CItemIDList(a));

    for (const CItemIDList& list : {head + below, below, CItemIDList()}) {
        ComPtr<IStream> stream;
        *stream.GetAddressOf() = SHCreateMemStream(nullptr, 0);
        ASSERT_EQ(list.write(stream.Get()), S_OK);
        STATSTG whole{};
        stream->Stat(&whole, STATFLAG_NONAME);
        stream->Seek({}, STREAM_SEEK_SET, nullptr);
        CItemIDList read(a);
        ASSERT_EQ(read.read(stream.Get()), S_OK);
        EXPECT_EQ(read.to_list() ? bytes_of(read.to_list().get()) : "",
                  bytes_of(list.to_list().get()));
        EXPECT_EQ(read.has_head(), list.has_head());
        for (const ULONGLONG length : {whole.cbSize.QuadPart - 1, ULONGLONG{4}, ULONGLONG{0}}) {
            stream->SetSize(ULARGE_INTEGER{.QuadPart = length});
            stream->Seek({}, STREAM_SEEK_SET, nullptr);
            read = CItemIDList(a);
            EXPECT_EQ(read.read(stream.Get()), E_FAIL) << length;
            EXPECT_EQ(read, CItemIDList(a));
        }
    }
    const std::string promises_more("\0\xFF\xFF\xFF\xFF", 5);
    ComPtr<IStream> stream;
    *stream.GetAddressOf() = SHCreateMemStream(reinterpret_cast<const BYTE*>(promises_more.data()),
                                               static_cast<UINT>(promises_more.size()));
    EXPECT_EQ(CItemIDList().read(stream.Get()), E_FAIL);
}

/// Lists that are none of ours, each behind which no byte may be read.
TEST_F(items, are_told_from_foreign_lists) {
    const std::string ours = bytes_of(record(file_fields{.name = std::wstring(300, L'n')}));
    const std::string foreign = std::string("\x14\0", 2) + std::string(18, 'x');
    const std::string shorter = std::string("\x47\3", 2) + ours.substr(2, 837);
    const auto drive = make_drive();
    for (const std::string& bytes :
         {foreign, foreign + ours, ours + foreign, shorter, ours + shorter}) {
        const guarded_bytes list(bytes + std::string(2, '\0'));
        EXPECT_EQ(bytes_of(list.as_list()), bytes);
        EXPECT_THROW(CItemIDList(list.as_list(), false), com::status_exception);
        EXPECT_EQ(bytes_of(CItemIDList(list.as_list(), true).to_list().get()), bytes);
        const ITEMIDLIST* item = list.as_list();
        SFGAOF flags = ~SFGAOF{0};
        STRRET name{};
        void* result = this;
        EXPECT_EQ(drive->GetAttributesOf(1, &item, &flags), S_OK);
        EXPECT_EQ(flags, bytes.starts_with(ours) ? 0x40400073U : 0U);
        EXPECT_EQ(drive->GetDisplayNameOf(item, SHGDN_NORMAL, &name), E_INVALIDARG);
        EXPECT_EQ(drive->BindToObject(item, nullptr, __uuidof(IShellFolder), &result),
                  E_INVALIDARG);
        EXPECT_EQ(drive->SetNameOf(nullptr, item, L"x", SHGDN_NORMAL, nullptr), E_INVALIDARG);
        SHELLDETAILS details{};
        if (!bytes.ends_with(ours)) {
            EXPECT_EQ(drive->GetDetailsOf(item, 0, &details), E_INVALIDARG);
            EXPECT_EQ(drive->CompareIDs(0, item, item), E_INVALIDARG);
            EXPECT_EQ(
                drive->GetUIObjectOf(nullptr, 1, &item, __uuidof(IExtractIconW), nullptr, &result),
                E_INVALIDARG);
        }
    }
    // Nothing, and an entry that is too short for its own size.
    for (const std::string& end : {std::string(2, '\0'), std::string("\1\0", 2)}) {
        const guarded_bytes list(end);
        const ITEMIDLIST* item = list.as_list();
        EXPECT_EQ(CItemIDList(item, false).count(), 0u);
        SFGAOF flags = 0x77;
        EXPECT_EQ(drive->GetAttributesOf(1, &item, &flags), S_OK);
        EXPECT_EQ(flags, 0x77u);
    }
    EXPECT_EQ(count_requests(), 0u);
    // All that a record claims of itself is looked at within its fields.
    std::string wild = ours;
    std::iota(wild.begin() + 2, wild.end(), '\x81');
    const guarded_bytes list(wild + std::string(2, '\0'));
    EXPECT_EQ(name_of(*drive.Get(), list.as_list(), SHGDN_NORMAL).size(), 260u);
    EXPECT_NE(cell_of(*drive.Get(), list.as_list(), 1), L"");
    cell_of(*drive.Get(), list.as_list(), 2);
    EXPECT_EQ(drive->CompareIDs(0, list.as_list(), list.as_list()), 0);
}

TEST_F(items, have_an_order) {
    const auto compare = [](LPARAM column, const CItemIDList& a, const CItemIDList& b) {
        return compare_lists(column, a.to_list().get(), b.to_list().get());
    };
    constexpr LPARAM canonical = SHCIDS_CANONICALONLY;
    const CItemIDList none;
    const CItemIDList directory(record(directory_fields{.id = L"1", .name = L"z"}));
    const CItemIDList little(record(file_fields{.name = L"\u00c4b.txt", .size = 1}));
    const CItemIDList big(
        record(file_fields{.name = L"\u00e4C.abc", .size = 1LL << 40, .modification_date = 9}));
    EXPECT_EQ(compare(0, none, none), 1);
    EXPECT_EQ(compare(0, directory, none), 0xFFFF);
    for (const LPARAM column : {0, 1, 2, 3, 4, 99}) {
        EXPECT_EQ(compare(column, directory, little), 0xFFFF) << column;
        EXPECT_EQ(compare(column, little, directory), 1) << column;
    }
    EXPECT_EQ(compare(0, little, big), 0xFFFF) << "b before c, whatever their case";
    EXPECT_EQ(compare(canonical, big, little), 1);
    EXPECT_GT(static_cast<short>(compare(1, little, big)), 0) << "\".txt\" is the later type";
    EXPECT_EQ(compare(2, big, little), 1);
    EXPECT_EQ(compare(3, little, big), 0);
    EXPECT_EQ(compare(4, little, big), 0);
    EXPECT_EQ(compare(0x100 | 2, big, little), 1) << "only the low byte counts";
    EXPECT_EQ(compare(canonical, directory + little, little), 0xFFFF) << "the longer path first";
    EXPECT_EQ(compare(canonical, directory + big, directory + little), 1);
    // Differences that 16 bits do not hold with their sign.
    const CItemIDList ascii(record(file_fields{.name = L"a"}));
    const CItemIDList distant(record(file_fields{.name = L"\uff21"}));
    EXPECT_GT(static_cast<short>(compare(0, distant, ascii)), 0);
    EXPECT_LT(static_cast<short>(compare(0, ascii, distant)), 0);
    EXPECT_EQ(compare_lists(0, nullptr, nullptr), E_INVALIDARG);
}

TEST_F(items, can_be_used_as_their_kind_allows) {
    struct {
        directory_fields fields;
        SFGAOF elsewhere;
        SFGAOF in_file_manager;
    } const directories[] = {
        {{}, 0x78000000 | 0x17B, 0x28000173},
        {{.subfolders = true, .shared = true}, 0xF8000000 | 0x2017B, 0xA8020173},
        {{.subfolders = true, .shared = true, .delete_date = 5}, 0x50000068, 0x60},
    };

    for (const auto& [fields, elsewhere, in_file_manager] : directories) {
        EXPECT_EQ(get_attributes(record(fields), false), elsewhere);
        EXPECT_EQ(get_attributes(record(fields), true), in_file_manager);
    }
    PIDLDATA fixed = record(directory_fields{});
    fixed.is_root_directory = 1;
    EXPECT_EQ(get_attributes(fixed, true), 0x28000140u);
    EXPECT_EQ(get_attributes(record(file_fields{}), false), 0x40400073u);
    EXPECT_EQ(get_attributes(record(file_fields{}), true), 0x400073u);
    EXPECT_EQ(get_attributes(record(file_fields{.delete_date = 5}), true), 0x400060u);
}

TEST_F(items, have_properties_and_cells) {
    EXPECT_EQ(format_size(1234567, 1, 1, false), L"1 206 KB");
    EXPECT_EQ(format_size(1500000, 0, 4, true), L"1.42 MB");
    EXPECT_EQ(format_size(500, 0, 4, true), L"500 bytes");
    EXPECT_EQ(format_size(999'999, 0, 4, true), L"976 KB");
    EXPECT_EQ(format_size((1LL << 53) - 1, 0, 0, false), L"9 007 199 254 740 991 bytes");
    EXPECT_EQ(format_size(INT64_MAX, 0, 4, false), L"8 388 608 TB");
    EXPECT_EQ(format_number(1.05, 2, L'.', L' '), L"1.5") << "odd, and wanted";
    EXPECT_EQ(format_number(1234.5, 2, L',', 0), L"1234,5");
    EXPECT_EQ(format_number(-1234.0, 0, L'.', L' '), L"-1 234");
    EXPECT_EQ(format_number(0.0, 0, L'.', L' '), L"0");

    const auto drive = make_drive();
    for (const auto& [size, text] :
         {std::pair{0, L"0 KB"}, {1, L"1 KB"}, {1024, L"1 KB"}, {1025, L"2 KB"}}) {
        const CItemIDList file(record(file_fields{.size = size}));
        EXPECT_EQ(cell_of(*drive.Get(), file.to_list().get(), 2), text);
    }
    const auto file =
        CItemIDList(record(file_fields{.name = L"a.b.xyz", .modification_date = 0})).to_list();
    const auto directory = CItemIDList(record(directory_fields{.name = L"d"})).to_list();
    EXPECT_EQ(cell_of(*drive.Get(), file.get(), 3), L"-");
    EXPECT_NE(cell_of(*drive.Get(), file.get(), 4), L"-");
    for (const UINT column : {2u, 3u, 4u}) {
        EXPECT_EQ(cell_of(*drive.Get(), directory.get(), column), L"-");
    }

    const auto property = [&](const com::unique_id_list& item, const GUID& fmtid, DWORD pid) {
        com::variant value;
        const SHCOLUMNID key{fmtid, pid};
        const HRESULT status = drive->GetDetailsEx(item.get(), &key, &value.get());
        if (FAILED(status) || value.get().vt != VT_BSTR) {
            return std::to_wstring(FAILED(status) ? static_cast<unsigned>(status) : value.get().vt);
        }
        return std::wstring(value.get().bstrVal);
    };
    constexpr GUID details = {
        0x28636aa6, 0x953d, 0x11d2, {0xb5, 0xd6, 0x00, 0xc0, 0x4f, 0xd9, 0x18, 0xd0}};
    constexpr GUID previews = {
        0xc9944a21, 0xa406, 0x48fe, {0x82, 0x25, 0xae, 0xc7, 0xe2, 0x4c, 0x21, 0x1b}};
    const auto code = [](HRESULT status) {
        return std::to_wstring(static_cast<unsigned>(status));
    };
    EXPECT_EQ(property(file, storage_properties, 10), L"a.b.xyz");
    EXPECT_EQ(property(file, storage_properties, 4), file_types().of_file(L".xyz").text);
    EXPECT_EQ(property(file, details, 11), L".xyz");
    EXPECT_EQ(property(directory, details, 11), L"");
    EXPECT_EQ(property(file, storage_properties, 12), code(VT_UI8));
    EXPECT_EQ(property(file, storage_properties, 14), code(VT_DATE));
    EXPECT_EQ(property(file, storage_properties, 15), code(E_FAIL));
    EXPECT_EQ(property(directory, storage_properties, 12), code(E_FAIL));
    EXPECT_EQ(property(file, previews, 6), L"prop:System.ItemNameDisplay;System.ItemTypeText");
    EXPECT_EQ(property(file, previews, 8),
              L"prop:System.DateModified;System.Size;System.DateAccessed");
    EXPECT_EQ(property(file, storage_properties, 11), code(E_NOTIMPL));
    const SHCOLUMNID key{storage_properties, 10};
    EXPECT_EQ(drive->GetDetailsEx(file.get(), &key, nullptr), E_POINTER);
}

} // namespace

} // namespace shell
