/// Records, lists of them, and what is read from a record alone.
#include "guarded_bytes.h"
#include "signed_in.h"

#include "shell/extract_icon.h"
#include "shell/item_attributes.h"
#include "shell/item_order.h"
#include "shell/item_properties.h"
#include "shell_items/display_text.h"
#include "shell_items/file_types.h"
#include "utils/module.h"
#include "vfs_quilldeck/items/directory.h"
#include "vfs_quilldeck/items/file.h"
#include "vfs_quilldeck/session/client.h"
#include "vfs_quilldeck/session/session.h"

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

using shell::bytes_of;

std::string bytes_of(const PIDLDATA& record) {
    return {reinterpret_cast<const char*>(&record), sizeof(record)};
}

TEST_F(items, become_records) {
    constexpr vfs::time_seconds day = 86400;
    file_types types;
    const PIDLDATA file = record(file_fields{.id = std::wstring(50, L'7'),
                                             .name = std::wstring(256, L'n') + L".txt",
                                             .size = 5'000'000'000,
                                             .access_date = 0,
                                             .modification_date = day + day / 2});
    PIDLDATA expected;
    expected.type = 2;
    expected.set_name(std::wstring(256, L'n') + L".tx"); // 259 units and a terminator
    types.of_file(L".txt").text.copy(expected.type_text, 79);
    std::wstring(49, L'7').copy(expected.id, 49);
    expected.size = 5'000'000'000;
    expected.creation_date = expected.delete_date = -1.0;
    expected.modification_date = 25570.5;
    EXPECT_EQ(bytes_of(file), bytes_of(expected));

    const PIDLDATA directory = record(directory_fields{.id = L"8",
                                                       .name = L"d.txt",
                                                       .subfolders = true,
                                                       .shared = true,
                                                       .creation_date = day,
                                                       .delete_date = 2 * day});
    expected = PIDLDATA();
    expected.type = expected.has_subfolders = expected.is_shared = expected.is_own_directory = 1;
    expected.set_name(L"d.txt");
    types.directory_text().copy(expected.type_text, 79);
    std::wstring(L"dir_8").copy(expected.id, 49);
    expected.size = -1;
    expected.creation_date = 25570.0;
    expected.access_date = expected.modification_date = -1.0;
    expected.delete_date = 25571.0;
    EXPECT_EQ(bytes_of(directory), bytes_of(expected));
}

TEST_F(items, form_lists) {
    const PIDLDATA a = record(directory_fields{.id = L"1", .name = L"a"});
    const PIDLDATA b = record(file_fields{.id = L"2", .name = L"b"});
    const CItemIDList head(drive_list().get(), true);
    const CItemIDList below = CItemIDList(a) + CItemIDList(b);
    EXPECT_EQ(bytes_of((head + below).to_list().get()),
              bytes_of(drive_list().get()) + bytes_of(a) + bytes_of(b));
    EXPECT_EQ(below.path_string(), L"a\\b");
    EXPECT_EQ(below + head, below) << "a second head is dropped";
    EXPECT_NE(head + below, below);

    for (const CItemIDList& list : {head + below, below, CItemIDList()}) {
        ComPtr<IStream> stream;
        STATSTG whole{};
        *stream.GetAddressOf() = SHCreateMemStream(nullptr, 0);
        ASSERT_EQ(list.write(stream.Get()), S_OK);
        stream->Stat(&whole, STATFLAG_NONAME);
        CItemIDList read(a);
        std::string bytes(whole.cbSize.QuadPart, '\0');
        stream->Seek({}, STREAM_SEEK_SET, nullptr);
        stream->Read(bytes.data(), static_cast<ULONG>(bytes.size()), nullptr);
        const auto read_first = [&](std::size_t size) {
            *stream.ReleaseAndGetAddressOf() = SHCreateMemStream(
                reinterpret_cast<const BYTE*>(bytes.data()), static_cast<UINT>(size));
            return read.read(stream.Get());
        };
        for (const std::size_t size : {std::size_t{0}, std::size_t{4}, bytes.size() - 1}) {
            EXPECT_EQ(read_first(size), E_FAIL) << size;
            EXPECT_EQ(read, CItemIDList(a)) << "nothing has changed";
        }
        EXPECT_EQ(read_first(bytes.size()), S_OK);
        EXPECT_EQ(bytes_of(read.to_list().get()), bytes_of(list.to_list().get()));
        EXPECT_EQ(read.has_head(), list.has_head());
    }
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
        const ITEMIDLIST* item = list.as_list();
        EXPECT_EQ(bytes_of(CItemIDList(item, true).to_list().get()), bytes);
        EXPECT_THROW(CItemIDList(item, false), com::status_exception);
        EXPECT_EQ(attributes_of(*drive.Get(), {item}), bytes.starts_with(ours) ? 0x40400073U : 0U);
        STRRET name{};
        void* result = nullptr;
        SHELLDETAILS details{};
        EXPECT_EQ(drive->GetDisplayNameOf(item, SHGDN_NORMAL, &name), E_INVALIDARG);
        EXPECT_EQ(drive->BindToObject(item, nullptr, IID_IShellFolder, &result), E_INVALIDARG);
        EXPECT_EQ(drive->SetNameOf(nullptr, item, L"x", SHGDN_NORMAL, nullptr), E_INVALIDARG);
        // These look at the last item only.
        const HRESULT expected = bytes.ends_with(ours) ? S_OK : E_INVALIDARG;
        EXPECT_EQ(drive->CompareIDs(0, item, item), expected);
        EXPECT_EQ(drive->GetDetailsOf(item, 0, &details), expected);
        CoTaskMemFree(details.str.pOleStr);
    }
    // Nothing, and an entry that is too short for its own size.
    for (const std::string& end : {std::string(2, '\0'), std::string("\1\0", 2)}) {
        const guarded_bytes list(end);
        EXPECT_EQ(CItemIDList(list.as_list(), false).count(), 0u);
        EXPECT_EQ(attributes_of(*drive.Get(), {list.as_list()}), ~SFGAOF{0});
    }
    // All that a record claims of itself is looked at within its fields.
    std::string wild = ours;
    std::iota(wild.begin() + 2, wild.end(), '\x81');
    const guarded_bytes list(wild + std::string(2, '\0'));
    EXPECT_EQ(name_of(*drive.Get(), list.as_list(), SHGDN_NORMAL).size(), 260u);
    EXPECT_EQ(cell_of(*drive.Get(), list.as_list(), 1).size(), 80u);
    EXPECT_NE(cell_of(*drive.Get(), list.as_list(), 2), L"-");
    EXPECT_EQ(drive->CompareIDs(0, list.as_list(), list.as_list()), 0);
}

TEST_F(items, have_an_order) {
    const auto compare = [](LPARAM column, const CItemIDList& a, const CItemIDList& b) {
        const HRESULT answer = compare_lists(column, a.to_list().get(), b.to_list().get());
        EXPECT_EQ(answer >> 16, 0);
        return static_cast<int>(static_cast<short>(answer));
    };
    constexpr LPARAM canonical = SHCIDS_CANONICALONLY;
    const CItemIDList none;
    const CItemIDList directory(record(directory_fields{.id = L"1", .name = L"z"}));
    const CItemIDList little(record(file_fields{.name = L"\u00c4b.txt", .size = 1}));
    const CItemIDList big(
        record(file_fields{.name = L"\u00e4C.abc", .size = 1LL << 40, .modification_date = 9}));
    EXPECT_EQ(compare(0, none, none), 1);
    for (const LPARAM column : {0, 1, 2, 3, 4, 99}) {
        EXPECT_EQ(compare(column, directory, little), -1) << column;
        EXPECT_EQ(compare(column, little, directory), 1) << column;
    }
    EXPECT_EQ(compare(0, little, big), -1) << "b before c, whatever their case";
    EXPECT_EQ(compare(1, little, big), L't' - L'a') << "the types \".txt ...\" and \".abc ...\"";
    EXPECT_EQ(compare(2, big, little), 1);
    EXPECT_EQ(compare(0x100 | 2, big, little), 1) << "only the low byte counts";
    EXPECT_EQ(compare(4, little, big), 0);
    EXPECT_EQ(compare(canonical, directory + little, little), -1) << "the longer path first";
    EXPECT_EQ(compare(canonical, directory + big, directory + little), 1);
    // Differences that 16 bits do not hold with their sign.
    const CItemIDList ascii(record(file_fields{.name = L"a"}));
    const CItemIDList distant(record(file_fields{.name = L"\uff21"}));
    EXPECT_GT(compare(0, distant, ascii), 0);
    EXPECT_LT(compare(0, ascii, distant), 0);
    EXPECT_EQ(compare_lists(0, nullptr, nullptr), E_INVALIDARG);
}

TEST_F(items, can_be_used_as_their_kind_allows) {
    PIDLDATA fixed = record(directory_fields{});
    fixed.is_root_directory = 1;

    const struct {
        PIDLDATA record;
        SFGAOF in_file_manager;
        SFGAOF elsewhere;
    } rows[] = {
        {record(directory_fields{}), 0x28000173, 0x7800017B},
        {record(directory_fields{.subfolders = true, .shared = true}), 0xA8020173, 0xF802017B},
        {record(directory_fields{.subfolders = true, .shared = true, .delete_date = 5}), 0x60,
         0x50000068},
        {fixed, 0x28000140, 0x78000148},
        {record(file_fields{}), 0x400073, 0x40400073},
        {record(file_fields{.delete_date = 5}), 0x400060, 0x40400060},
    };

    for (const auto& [record, in_file_manager, elsewhere] : rows) {
        EXPECT_EQ(get_attributes(record, true), in_file_manager);
        EXPECT_EQ(get_attributes(record, false), elsewhere);
    }
}

TEST_F(items, have_cells_and_properties) {
    EXPECT_EQ(format_size(1234567, 1, 1, false), L"1 206 KB");
    EXPECT_EQ(format_size(1500000, 0, 4, true), L"1.42 MB");
    EXPECT_EQ(format_size(500, 0, 4, true), L"500 bytes");
    EXPECT_EQ(format_size(999'999, 0, 4, true), L"976 KB");
    EXPECT_EQ(format_size((1LL << 53) - 1, 0, 0, false), L"9 007 199 254 740 991 bytes");
    EXPECT_EQ(format_number(1.05, 2, L'.', L' '), L"1.5") << "odd, and wanted";
    EXPECT_EQ(format_number(1234.5, 2, L',', 0), L"1234,5");

    const auto drive = make_drive();
    SHCOLUMNID column{};
    EXPECT_EQ(cell_of(*drive.Get(), nullptr, 4), L"Date modified");
    EXPECT_EQ(drive->MapColumnToSCID(4, &column), S_OK);
    EXPECT_EQ(column.pid, 14u);
    EXPECT_EQ(drive->MapColumnToSCID(5, &column), E_INVALIDARG);
    const auto cell = [&](std::int64_t size) {
        const CItemIDList file(record(file_fields{.size = size}));
        return cell_of(*drive.Get(), file.to_list().get(), 2);
    };
    EXPECT_EQ(cell(0) + cell(1) + cell(1024) + cell(1025), L"0 KB1 KB1 KB2 KB");
    const auto file =
        CItemIDList(record(file_fields{.name = L"a.b.xyz", .modification_date = 9})).to_list();
    const auto directory = CItemIDList(record(directory_fields{.name = L"d"})).to_list();
    EXPECT_EQ(cell_of(*drive.Get(), file.get(), 3), L"-");
    EXPECT_EQ(cell_of(*drive.Get(), directory.get(), 2), L"-");

    constexpr GUID item_type = {
        0x28636aa6, 0x953d, 0x11d2, {0xb5, 0xd6, 0x00, 0xc0, 0x4f, 0xd9, 0x18, 0xd0}};
    constexpr GUID previews = {
        0xc9944a21, 0xa406, 0x48fe, {0x82, 0x25, 0xae, 0xc7, 0xe2, 0x4c, 0x21, 0x1b}};

    const struct {
        const com::unique_id_list& item;
        SHCOLUMNID key;
        std::wstring text;
        VARTYPE type = VT_BSTR;
        HRESULT status = S_OK;
    } rows[] = {
        {file, {storage_properties, 10}, L"a.b.xyz"},
        {file, {storage_properties, 4}, file_types().of_file(L".xyz").text},
        {file, {item_type, 11}, L".xyz"},
        {directory, {item_type, 11}, L""},
        {file, {previews, 6}, L"prop:System.ItemNameDisplay;System.ItemTypeText"},
        {file, {previews, 8}, L"prop:System.DateModified;System.Size;System.DateAccessed"},
        {file, {storage_properties, 12}, L"0", VT_UI8},
        {file, {storage_properties, 14}, L"25569.000104", VT_DATE},
        {file, {storage_properties, 15}, L"", VT_EMPTY, E_FAIL},
        {directory, {storage_properties, 12}, L"", VT_EMPTY, E_FAIL},
        {file, {storage_properties, 11}, L"", VT_EMPTY, E_NOTIMPL},
    };

    for (const auto& [item, key, text, type, status] : rows) {
        com::variant value;
        EXPECT_EQ(drive->GetDetailsEx(item.get(), &key, &value.get()), status) << key.pid;
        EXPECT_EQ(value.get().vt, type) << key.pid;
        EXPECT_EQ(type == VT_BSTR   ? value.get().bstrVal
                  : type == VT_UI8  ? std::to_wstring(value.get().ullVal)
                  : type == VT_DATE ? std::to_wstring(value.get().date)
                                    : L"",
                  text);
    }
    EXPECT_EQ(drive->GetDetailsEx(file.get(), &rows[0].key, nullptr), E_POINTER);
}

} // namespace

} // namespace shell
