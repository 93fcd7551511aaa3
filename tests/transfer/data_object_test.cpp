#include "outgoing.h"

#include <cstring>
#include <filesystem>
#include <map>

namespace transfer {

namespace {

/// What a data object hands out of itself.
class data_objects : public outgoing {};

FORMATETC request(UINT format, DWORD media, LONG index = -1) {
    return format_of(format, media, index);
}

std::vector<std::string> formats_of(IDataObject& source) {
    ComPtr<IEnumFORMATETC> all;
    com::check(source.EnumFormatEtc(DATADIR_GET, &all));
    std::vector<std::string> told;
    FORMATETC each{};
    while (all->Next(1, &each, nullptr) == S_OK) {
        char format[100]{};
        ::GetClipboardFormatNameA(each.cfFormat, format, sizeof(format));
        told.push_back(std::string(format) + " " + std::to_string(each.tymed) + " " +
                       std::to_string(each.dwAspect) + " " + std::to_string(each.lindex));
    }
    return told;
}

TEST_F(data_objects, tell_their_formats_without_asking_the_store) {
    asked();
    const auto object = make({L"tree", L"file"});
    EXPECT_EQ(asked(), "list_dir") << "by which the names are parsed";
    const std::vector<std::string> formats = {
        "OleClipboardPersistOnFlush 1 1 -1", "FileGroupDescriptorW 1 1 -1", "FileContents 4 1 -1",
        "Shell IDList Array 1 1 -1", "Quilldeck_DataObject 1 1 -1"};
    EXPECT_EQ(formats_of(*object.Get()), formats);

    const auto& known = registered_formats;

    struct row {
        FORMATETC format;
        HRESULT query;
        HRESULT get;
    };

    FORMATETC thumbnail = request(known.ole_clipboard_persist_on_flush, TYMED_HGLOBAL);
    thumbnail.dwAspect = DVASPECT_THUMBNAIL;
    const row rows[] = {
        {request(known.ole_clipboard_persist_on_flush, TYMED_HGLOBAL), S_OK, S_OK},
        {request(known.ole_clipboard_persist_on_flush, 0xFF), S_OK, S_OK},
        {request(known.ole_clipboard_persist_on_flush, TYMED_ISTREAM), DV_E_FORMATETC,
         DV_E_FORMATETC},
        {request(known.ole_clipboard_persist_on_flush, TYMED_HGLOBAL, 0), DV_E_FORMATETC,
         DV_E_FORMATETC},
        {thumbnail, DV_E_FORMATETC, DV_E_FORMATETC},
        {request(known.shell_id_list_array, TYMED_HGLOBAL), DV_E_FORMATETC, S_OK},
        {request(known.shell_id_list_array, TYMED_ISTREAM), DV_E_FORMATETC, DV_E_TYMED},
        {request(known.quilldeck_data_object, TYMED_HGLOBAL), S_OK, S_OK},
        {request(known.quilldeck_data_object, TYMED_ISTREAM), DV_E_FORMATETC, DV_E_TYMED},
        {request(known.file_group_descriptor, TYMED_HGLOBAL | TYMED_ISTREAM), S_OK, S_OK},
        {request(known.file_group_descriptor, TYMED_ISTREAM), DV_E_FORMATETC, DV_E_TYMED},
        {request(known.file_contents, TYMED_ISTREAM), S_OK, DV_E_LINDEX},
        {request(known.file_contents, TYMED_ISTREAM, 0), DV_E_FORMATETC, E_UNEXPECTED},
        {request(known.file_contents, TYMED_ISTREAM, 4), DV_E_FORMATETC, S_OK},
        {request(known.file_contents, TYMED_ISTREAM, 6), DV_E_FORMATETC, DV_E_LINDEX},
        {request(known.file_contents, TYMED_HGLOBAL, 4), DV_E_FORMATETC, DV_E_TYMED},
        {request(CF_HDROP, TYMED_HGLOBAL), DV_E_FORMATETC, DV_E_FORMATETC},
    };
    for (const row& each : rows) {
        FORMATETC format = each.format;
        EXPECT_EQ(object->QueryGetData(&format), each.query) << &each - rows;
    }
    EXPECT_EQ(asked(), "");
    for (const row& each : rows) {
        EXPECT_EQ(get(*object.Get(), each.format), each.get) << &each - rows;
    }
    EXPECT_EQ(read_value(*object.Get(), known.quilldeck_data_object), 1U);

    FORMATETC format = rows[0].format;
    STGMEDIUM medium{};
    medium.tymed = 7;
    EXPECT_EQ(object->GetData(nullptr, &medium), E_POINTER);
    EXPECT_EQ(medium.tymed, 0U) << "cleared first";
    EXPECT_EQ(object->GetData(&format, nullptr), E_POINTER);
    EXPECT_EQ(object->QueryGetData(nullptr), E_POINTER);
    EXPECT_EQ(object->GetDataHere(&format, &medium), E_NOTIMPL);
    FORMATETC same{};
    EXPECT_EQ(object->GetCanonicalFormatEtc(&format, &same), DATA_S_SAMEFORMATETC);
    EXPECT_EQ(same.cfFormat, format.cfFormat);
    EXPECT_EQ(object->GetCanonicalFormatEtc(&format, nullptr), E_POINTER);
    EXPECT_EQ(object->GetCanonicalFormatEtc(nullptr, &same), E_POINTER);
    ComPtr<IEnumFORMATETC> none;
    EXPECT_EQ(object->EnumFormatEtc(DATADIR_SET, &none), E_NOTIMPL);
    EXPECT_EQ(object->EnumFormatEtc(DATADIR_GET, nullptr), E_POINTER);
    EXPECT_EQ(object->DAdvise(&format, 0, nullptr, nullptr), E_NOTIMPL);
    EXPECT_EQ(object->DUnadvise(1), E_NOTIMPL);
    ComPtr<IEnumSTATDATA> sinks;
    EXPECT_EQ(object->EnumDAdvise(&sinks), OLE_E_ADVISENOTSUPPORTED);
    // It is read on the thread of whoever wants it, and nowhere else.
    constexpr IID asynchronous = {
        0x3d8b0590, 0xf691, 0x11d2, {0x8e, 0xa9, 0x00, 0x60, 0x97, 0xdf, 0x5b, 0xd4}};
    void* other = nullptr;
    EXPECT_EQ(object->QueryInterface(asynchronous, &other), E_NOINTERFACE);

    // Only what a folder of the drive lists can leave it.
    const ITEMIDLIST* foreign = shell::drive_list().release();
    void* result = nullptr;
    EXPECT_EQ(place->GetUIObjectOf(nullptr, 1, &foreign, __uuidof(IDataObject), nullptr, &result),
              E_INVALIDARG);
    EXPECT_EQ(place->GetUIObjectOf(nullptr, 0, nullptr, __uuidof(IDataObject), nullptr, &result),
              E_INVALIDARG);
    ::CoTaskMemFree(const_cast<ITEMIDLIST*>(foreign));
    EXPECT_EQ(com::guard([&] { make({L"tree\\empty"}); }), E_INVALIDARG) << "of another folder";
}

TEST_F(data_objects, describe_all_below_the_selection_once_and_on_demand) {
    const auto object = make({L"tree", L"file"});
    asked();

    struct row {
        const wchar_t* path;
        DWORD flags;
        DWORD attributes;
        std::size_t size;
    };

    const row rows[] = {
        {L"tree", 0x4004, 0x10, 0},
        {L"tree\\empty", 0x4004, 0x10, 0},
        {L"tree\\sub", 0x4004, 0x10, 0},
        {L"tree\\sub\\b", 0x4044, 0x80, large.size()},
        {L"tree\\a", 0x4044, 0x80, small.size()},
        {L"file", 0x4044, 0x80, large.size()},
    };
    std::vector<FILEDESCRIPTORW> expected;
    for (const row& each : rows) {
        FILEDESCRIPTORW record{};
        record.dwFlags = each.flags;
        record.dwFileAttributes = each.attributes;
        record.nFileSizeLow = static_cast<DWORD>(each.size);
        std::wcscpy(record.cFileName, each.path);
        expected.push_back(record);
    }
    for (int round = 0; round < 2; ++round) {
        const auto medium = get_block(*object.Get(), registered_formats.file_group_descriptor);
        EXPECT_EQ(medium.get().pUnkForRelease, nullptr);
        const com::global_lock block(medium.get().hGlobal);
        const auto bytes = block.bytes();
        ASSERT_GE(bytes.size(), 4 + sizeof(rows) / sizeof(row) * 592);
        const DWORD count = static_cast<DWORD>(expected.size());
        EXPECT_EQ(std::memcmp(bytes.data(), &count, 4), 0);
        EXPECT_EQ(std::memcmp(bytes.data() + 4, expected.data(), 592 * expected.size()), 0);
        EXPECT_EQ(asked(), round == 0 ? "list_dir list_dir list_dir" : "");
    }
    // What comes later does not show, so that the numbers of the files stay what they are.
    folder->create_file(L"new");
    folder->delete_item(L"file", true);
    EXPECT_EQ(get(*object.Get(), request(registered_formats.file_contents, TYMED_ISTREAM, 5)),
              E_UNEXPECTED)
        << "is gone";
    EXPECT_EQ(get(*object.Get(), request(registered_formats.file_contents, TYMED_ISTREAM, 6)),
              DV_E_LINDEX);
}

TEST_F(data_objects, give_streams_that_stand_for_themselves) {
    const auto object = make({L"tree", L"file"});
    const auto open = [&](LONG index) {
        FORMATETC format = request(registered_formats.file_contents, TYMED_ISTREAM, index);
        STGMEDIUM medium{};
        EXPECT_EQ(object->GetData(&format, &medium), S_OK);
        EXPECT_EQ(medium.tymed, static_cast<DWORD>(TYMED_ISTREAM));
        EXPECT_EQ(medium.pUnkForRelease, nullptr);
        ComPtr<IStream> stream;
        *stream.GetAddressOf() = medium.pstm;
        return stream;
    };
    // One file twice, and another beside it, read in turns.
    const std::vector<ComPtr<IStream>> streams = {open(5), open(5), open(3)};
    std::vector<content> read(streams.size());
    for (bool any = true; any;) {
        any = false;
        for (std::size_t i = 0; i < streams.size(); ++i) {
            content piece(50'000 + 10'000 * i);
            ULONG count = 0;
            ASSERT_HRESULT_SUCCEEDED(
                streams[i]->Read(piece.data(), static_cast<ULONG>(piece.size()), &count));
            read[i].insert(read[i].end(), piece.begin(), piece.begin() + count);
            any = any || count > 0;
        }
    }
    EXPECT_EQ(read, std::vector<content>(3, large));
}

TEST_F(data_objects, list_their_items_for_the_shell) {
    const auto object = make({L"tree", L"file"});
    asked();
    const auto medium = get_block(*object.Get(), registered_formats.shell_id_list_array);
    std::vector<std::string> lists = {
        shell::bytes_of(shell::drive_list().get()) +
            shell::bytes_of(shell::parse(*shell::make_drive().Get(), name).get()),
        shell::bytes_of(shell::parse(*place.Get(), L"tree").get()),
        shell::bytes_of(shell::parse(*place.Get(), L"file").get())};
    const UINT numbers[] = {2, 16, static_cast<UINT>(16 + lists[0].size() + 3),
                            static_cast<UINT>(16 + lists[0].size() + 3 + 843)};
    std::string expected(reinterpret_cast<const char*>(numbers), sizeof(numbers));
    for (const std::string& list : lists) {
        expected += list + std::string(3, '\0');
    }
    const com::global_lock block(medium.get().hGlobal);
    EXPECT_EQ(std::string(reinterpret_cast<const char*>(block.bytes().data()), expected.size()),
              expected);
    EXPECT_EQ(asked(), "") << "what the object knows by itself";

    // By which a file dialog finds out what was picked.
    ComPtr<IShellItemArray> items;
    ASSERT_EQ(::SHCreateShellItemArrayFromDataObject(object.Get(), IID_PPV_ARGS(&items)), S_OK);
    DWORD count = 0;
    EXPECT_EQ(items->GetCount(&count), S_OK);
    EXPECT_EQ(count, 2U);

    ComPtr<IDataObjectImpl> ours;
    ASSERT_EQ(object.As(&ours), S_OK);
    ITEMIDLIST* root = nullptr;
    ITEMIDLIST* path = nullptr;
    ASSERT_EQ(ours->GetPath(&root, &path), S_OK);
    EXPECT_EQ(shell::bytes_of(root) + shell::bytes_of(path), lists[0]);
    ::CoTaskMemFree(root);
    ::CoTaskMemFree(path);
    EXPECT_EQ(ours->GetPath(&root, nullptr), E_POINTER);
    EXPECT_EQ(root, nullptr);
}

std::string listing(const std::string& entries) {
    return "<R>" + entries + "</R>";
}

std::string directory_entry(const std::string& id, const std::string& name) {
    return "<Directory><ID>" + id + "</ID><Name>" + name + "</Name></Directory>";
}

std::string file_entry(const std::string& id, const std::string& name) {
    return "<File><ID>" + id + "</ID><Name>" + name + "</Name><Size>5000000000</Size></File>";
}

/// What the store tells cannot lead a consumer anywhere else, nor this process to its end.
TEST_F(data_objects, do_not_describe_what_cannot_be_placed) {
    const std::string cases[] = {
        listing(file_entry("7", "good") + file_entry("8", "..")),
        listing(file_entry("7", "good") + directory_entry("8", ".")),
        listing(file_entry("7", "good") + file_entry("8", "a\\b")),
        listing(file_entry("7", "good") + file_entry("8", "a/b")),
        listing(file_entry("7", "good") + file_entry("8", "C:b")),
        listing(file_entry("7", "")),
        // A folder that holds itself.
        listing(directory_entry("8", "again")),
    };
    for (const std::string& reply : cases) {
        const auto object = make({L"tree"});
        control.fault(
            {{"kind", "garbage"}, {"action", "list_dir"}, {"count", "1000000"}, {"body", reply}});
        EXPECT_EQ(take_files(*object.Get()), "failed 8000ffff") << reply;
        control.reset();
        // Half a table would be taken for the whole.
        EXPECT_EQ(take_files(*object.Get()), "failed 8000ffff") << reply;
    }
    // A size above 4 GB, and a path with no room for it: its end is missing, and so is the file.
    const auto object = make({L"tree"});
    const std::string longest(200, 'x');
    control.fault({{"kind", "garbage"},
                   {"action", "list_dir"},
                   {"count", "1"},
                   {"body", listing(directory_entry("8", longest) + file_entry("9", "big"))}});
    control.fault({{"kind", "garbage"},
                   {"action", "list_dir"},
                   {"count", "1000000"},
                   {"body", listing(file_entry("10", longest))}});
    const auto medium = get_block(*object.Get(), registered_formats.file_group_descriptor);
    const com::global_lock block(medium.get().hGlobal);
    const auto* const group = reinterpret_cast<const FILEGROUPDESCRIPTORW*>(block.bytes().data());
    ASSERT_EQ(group->cItems, 4U);
    EXPECT_EQ(std::wcslen(group->fgd[2].cFileName), 259U);
    EXPECT_EQ(group->fgd[3].nFileSizeHigh, 1U);
    EXPECT_EQ(group->fgd[3].nFileSizeLow, 705'032'704U);
    EXPECT_EQ(get(*object.Get(), request(registered_formats.file_contents, TYMED_ISTREAM, 2)),
              E_UNEXPECTED);
}

} // namespace

} // namespace transfer
