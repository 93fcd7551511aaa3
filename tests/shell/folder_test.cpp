/// What is the drive's own: how it connects, and what stands behind the names that it shows.
#include "driven_window.h"
#include "process_census.h"
#include "signed_in.h"

#include "shell/extract_icon.h"
#include "shell/item_properties.h"
#include "shell/view_callback.h"
#include "transfer/stream.h"
#include "utils/module.h"
#include "vfs_quilldeck/identity_block.h"

#include <thread>

namespace shell {

namespace {

constexpr auto all = SHCONTF_FOLDERS | SHCONTF_NONFOLDERS;

class desk : public signed_in {
protected:
    desk() {
        asked_to_sign_in = 0;
        signs_in = true;
        set_seams({[](utils::named_mutex&, HWND) {
                       ++asked_to_sign_in;
                       if (signs_in) {
                           sign_in();
                       }
                       return signs_in;
                   },
                   transfer::create_stream});
    }

    /// A new folder in the store, as a folder of the shell.
    ComPtr<IShellFolder2> make_folder(const std::wstring& name) {
        directory_of(*drive.Get())->create_directory(name);
        return open(*drive.Get(), name);
    }

    inline static int asked_to_sign_in;
    inline static bool signs_in;
    const ComPtr<IShellFolder2> drive = make_drive();
};

TEST_F(desk, asks_to_sign_in_when_it_is_opened_only) {
    vfs_quilldeck::write_shared_user_info(utils::own_module(), {});
    signs_in = false;
    wchar_t name[] = L"Documents";
    ITEMIDLIST* parsed = nullptr;
    void* result = nullptr;
    VARIANT item{};
    ComPtr<IShellFolderImpl> ours;
    ASSERT_EQ(drive.As(&ours), S_OK);
    EXPECT_EQ(drive->ParseDisplayName(nullptr, nullptr, name, nullptr, &parsed, nullptr), E_FAIL);
    EXPECT_EQ(ours->GetObject(nullptr, &item), E_FAIL);
    EXPECT_EQ(drive->CreateViewObject(nullptr, __uuidof(IStream), &result), E_FAIL);
    const auto some = CItemIDList(PIDLDATA()).to_list();
    EXPECT_EQ(drive->SetNameOf(nullptr, some.get(), L"x", SHGDN_NORMAL, nullptr), E_FAIL);
    EXPECT_EQ(drive->BindToObject(some.get(), nullptr, __uuidof(IShellFolder), &result), E_FAIL);
    EXPECT_EQ(asked_to_sign_in, 0);

    ComPtr<IShellView> view;
    EXPECT_EQ(drive->CreateViewObject(nullptr, IID_PPV_ARGS(&view)), S_OK);
    ComPtr<IEnumIDList> items;
    EXPECT_EQ(drive->EnumObjects(nullptr, all, &items), S_FALSE);
    EXPECT_FALSE(items);
    EXPECT_EQ(asked_to_sign_in, 1);
    EXPECT_EQ(count_requests(), 0u);
    signs_in = true;
    EXPECT_EQ(drive->EnumObjects(nullptr, all, &items), S_OK);
    EXPECT_EQ(asked_to_sign_in, 2);
    EXPECT_EQ(drive->EnumObjects(nullptr, 0, &items), S_FALSE);
    EXPECT_FALSE(items);

    // Whoever connected once stays so; a child asks again.
    const auto child = open(*drive.Get(), L"Documents");
    vfs_quilldeck::write_shared_user_info(utils::own_module(), {});
    EXPECT_FALSE(list(*drive.Get(), all).empty());
    EXPECT_EQ(asked_to_sign_in, 2);
    EXPECT_FALSE(list(*child.Get(), all).empty());
    EXPECT_EQ(asked_to_sign_in, 3);
}

TEST_F(desk, shows_failures_of_the_store) {
    const auto documents = open(*drive.Get(), L"Documents");
    ASSERT_FALSE(list(*documents.Get(), all).empty());
    control.fault({{"kind", "garbage"},
                   {"body", "<R><Error><Type>2</Type><Name>No way</Name>"
                            "<Description>The store is shut</Description></Error></R>"}});
    std::jthread user([&] {
        const HWND box = support::await_dialog(L"No way");
        EXPECT_EQ(support::message_of(box), L"The store is shut");
        support::answer_box(box, IDOK);
    });
    ComPtr<IEnumIDList> items;
    EXPECT_EQ(documents->EnumObjects(nullptr, all, &items), S_FALSE);
}

TEST_F(desk, marks_what_a_folder_holds) {
    RegSetKeyValueW(HKEY_LOCAL_MACHINE, L"Software\\Classes\\.qdsong", L"PerceivedType", REG_SZ,
                    L"AUDIO", 12);
    const auto folder = make_folder(L"marks");
    const auto directory = directory_of(*folder.Get());
    EXPECT_TRUE(list(*folder.Get(), all).empty()) << "no enumerator for an empty folder";
    for (const auto* name : {L"a.unknown", L"qdsong", L"b.qdsong.x"}) {
        directory->create_file(name);
    }
    EXPECT_EQ(list(*folder.Get(), all).size(), 3u);
    EXPECT_EQ(directory->get_folder_flags(), vfs::folder_initial);
    directory->create_file(L"c.qdsong");
    list(*folder.Get(), SHCONTF_FOLDERS);
    EXPECT_EQ(directory->get_folder_flags(), vfs::folder_initial);
    list(*folder.Get(), SHCONTF_NONFOLDERS);
    EXPECT_EQ(directory->get_folder_flags(), vfs::folder_initial | vfs::folder_has_audio);
    RegDeleteTreeW(HKEY_LOCAL_MACHINE, L"Software\\Classes\\.qdsong");
}

TEST_F(desk, enters_nothing_in_the_trash) {
    const auto folder = make_folder(L"thrown away");
    directory_of(*folder.Get())->create_file(L"with it.txt");
    directory_of(*drive.Get())->delete_item(L"thrown away", true);
    EXPECT_EQ(folder->BindToObject(parse(*folder.Get(), L"with it.txt").get(), nullptr,
                                   __uuidof(IShellFolder), nullptr),
              E_POINTER);

    const auto trash = open(*drive.Get(), L"Trash");
    const auto item = parse(*trash.Get(), L"thrown away");
    const ITEMIDLIST* items[] = {item.get()};
    SFGAOF flags = ~SFGAOF{0};
    EXPECT_EQ(trash->GetAttributesOf(1, items, &flags), S_OK);
    EXPECT_EQ(flags, 0x50000068u) << "no folder, and nothing to do but delete it";
    ComPtr<IShellFolder> inside;
    ASSERT_EQ(trash->BindToObject(item.get(), nullptr, IID_PPV_ARGS(&inside)), S_OK);
    void* result = this;
    EXPECT_EQ(inside->BindToObject(item.get(), nullptr, __uuidof(IShellFolder), &result),
              E_NOINTERFACE);
    EXPECT_EQ(result, nullptr);
    EXPECT_EQ(inside->CreateViewObject(nullptr, __uuidof(IShellView), &result), E_NOINTERFACE);
}

TEST_F(desk, reads_and_writes_files_through_streams) {
    const auto folder = make_folder(L"streams");
    ComPtr<IStorage> storage;
    ASSERT_EQ(folder.As(&storage), S_OK);
    ComPtr<IStream> stream;
    ASSERT_EQ(storage->CreateStream(L"new.txt", STGM_CREATE, 0, 0, &stream), S_OK);
    const auto file = parse(*folder.Get(), L"new.txt");
    ASSERT_EQ(stream->Write("some bytes", 10, nullptr), S_OK);
    stream.Reset();
    directory_of(*folder.Get())->get_items();
    ASSERT_EQ(folder->BindToObject(file.get(), nullptr, IID_PPV_ARGS(&stream)), S_OK);
    char bytes[16]{};
    ASSERT_EQ(stream->Read(bytes, sizeof(bytes), nullptr), S_OK);
    EXPECT_STREQ(bytes, "some bytes");
    // The list tells of the file as it was, the details pane asks what has become of it.
    com::variant size;
    const SHCOLUMNID key{storage_properties, storage_size};
    EXPECT_EQ(folder->GetDetailsEx(file.get(), &key, &size.get()), S_OK);
    EXPECT_EQ(size.get().ullVal, 10u);
    EXPECT_EQ(cell_of(*folder.Get(), file.get(), 2), L"0 KB");

    EXPECT_EQ(storage->CreateStream(L"new.txt", STGM_CREATE, 0, 0, &stream), E_FAIL);
    EXPECT_FALSE(stream);
    ComPtr<IStorage> unplaced;
    ASSERT_EQ(make_drive().As(&unplaced), S_OK);
    EXPECT_EQ(unplaced->CreateStream(L"x", STGM_CREATE, 0, 0, &stream), E_FAIL);
    EXPECT_EQ(storage->Commit(0), E_NOTIMPL);

    PIDLDATA lost = record_of(file.get());
    lost.id[0] = L'x';
    for (const auto& no_file : {CItemIDList(lost).to_list(), parse(*drive.Get(), L"streams")}) {
        EXPECT_EQ(folder->BindToObject(no_file.get(), nullptr, IID_PPV_ARGS(&stream)),
                  E_NOINTERFACE);
    }
    void* result = nullptr;
    EXPECT_EQ(folder->BindToObject(CItemIDList(lost).to_list().get(), nullptr,
                                   __uuidof(IShellFolder), &result),
              E_FAIL);
    // A folder object may stand on a file.
    ComPtr<IShellFolder> on_file;
    ASSERT_EQ(folder->BindToObject(file.get(), nullptr, IID_PPV_ARGS(&on_file)), S_OK);
    EXPECT_EQ(on_file->CreateViewObject(nullptr, IID_PPV_ARGS(&stream)), S_OK);
    EXPECT_EQ(folder->CreateViewObject(nullptr, IID_PPV_ARGS(&stream)), E_NOINTERFACE);
    EXPECT_TRUE(list(*on_file.Get(), all).empty());
}

TEST_F(desk, hands_out_what_views_ask_for) {
    const auto pictures = open(*drive.Get(), L"Pictures");
    const auto dusk = parse(*pictures.Get(), L"Dusk.jpg");
    const auto experiments = parse(*pictures.Get(), L"Holidays 2026");
    const auto ask = [&](std::vector<const ITEMIDLIST*> items, REFIID iid) {
        void* result = this;
        const HRESULT status = pictures->GetUIObjectOf(nullptr, static_cast<UINT>(items.size()),
                                                       items.data(), iid, nullptr, &result);
        EXPECT_EQ(SUCCEEDED(status), result != nullptr);
        if (result) {
            static_cast<IUnknown*>(result)->Release();
        }
        return status;
    };
    EXPECT_EQ(ask({dusk.get()}, __uuidof(IExtractIconW)), S_OK);
    EXPECT_EQ(ask({dusk.get(), dusk.get()}, __uuidof(IExtractIconW)), E_FAIL);
    EXPECT_EQ(ask({dusk.get()}, __uuidof(IExtractImage)), S_OK);
    EXPECT_EQ(ask({experiments.get()}, __uuidof(IExtractImage)), E_FAIL);
    EXPECT_EQ(ask({}, __uuidof(IExtractImage)), E_INVALIDARG);
    EXPECT_EQ(ask({dusk.get()}, __uuidof(IDataObject)), E_NOINTERFACE);

    void* result = nullptr;
    EXPECT_EQ(pictures->CreateViewObject(nullptr, __uuidof(IExtractImage), &result), E_FAIL);
    ComPtr<ITransferDestination> destination;
    EXPECT_EQ(pictures->CreateViewObject(nullptr, IID_PPV_ARGS(&destination)), S_OK);
    EXPECT_EQ(destination->Unadvise(1), E_NOTIMPL);
    ComPtr<IObjectWithSite> sited;
    ASSERT_EQ(pictures.As(&sited), S_OK);
    EXPECT_EQ(sited->GetSite(__uuidof(IUnknown), &result), E_FAIL);
    EXPECT_EQ(sited->SetSite(drive.Get()), S_OK);
    ComPtr<IShellFolder> site;
    EXPECT_EQ(sited->GetSite(IID_PPV_ARGS(&site)), S_OK);
    EXPECT_EQ(site.Get(), drive.Get());
    EXPECT_EQ(sited->SetSite(nullptr), S_OK);

    const auto callback = com::make<CShellFolderViewCBImpl>(drive_list());
    const ITEMIDLIST* watched = nullptr;
    LONG events = 0;
    DWORD zone = 9;
    const auto tell = [&](UINT message, void* wparam, void* lparam) {
        return callback->MessageSFVCB(message, reinterpret_cast<WPARAM>(wparam),
                                      reinterpret_cast<LPARAM>(lparam));
    };
    EXPECT_EQ(tell(49, static_cast<void*>(&watched), &events), S_OK);
    EXPECT_TRUE(is_equal(watched, drive_list().get()));
    EXPECT_EQ(events, 0x7FFFFFFF);
    EXPECT_EQ(tell(58, nullptr, &zone), S_OK);
    EXPECT_EQ(zone, 0u);
    EXPECT_EQ(tell(5, nullptr, &zone), S_OK);
    EXPECT_EQ(tell(6, nullptr, &zone), S_OK);
    EXPECT_EQ(zone, 0u);
    EXPECT_EQ(tell(49, nullptr, nullptr), E_POINTER);
    EXPECT_EQ(tell(50, static_cast<void*>(&watched), &events), E_NOTIMPL);
}

TEST_F(desk, shows_the_columns_of_the_store) {
    const struct {
        const wchar_t* title;
        int format;
        int width;
        SHCOLSTATEF state;
        DWORD pid;
    } columns[] = {{L"Name", 0, 20, 0x11, 10},
                   {L"Type", 0, 15, 0x11, 4},
                   {L"Size", 1, 10, 0x12, 12},
                   {L"Date accessed", 0, 15, 0x3, 16},
                   {L"Date modified", 0, 15, 0x13, 14}};

    UINT index = 0;
    for (const auto& [title, format, width, state, pid] : columns) {
        SHELLDETAILS details{};
        EXPECT_EQ(drive->GetDetailsOf(nullptr, index, &details), S_OK);
        EXPECT_EQ(details.fmt, format);
        EXPECT_EQ(details.cxChar, width);
        CoTaskMemFree(details.str.pOleStr);
        EXPECT_EQ(cell_of(*drive.Get(), nullptr, index), title);
        SHCOLSTATEF found = 0;
        EXPECT_EQ(drive->GetDefaultColumnState(index, &found), S_OK);
        EXPECT_EQ(found, state);
        SHCOLUMNID key{};
        EXPECT_EQ(drive->MapColumnToSCID(index++, &key), S_OK);
        EXPECT_EQ(key.pid, pid);
    }
    SHELLDETAILS details{};
    SHCOLUMNID key{};
    EXPECT_EQ(drive->GetDetailsOf(nullptr, 5, &details), E_INVALIDARG);
    EXPECT_EQ(drive->MapColumnToSCID(5, &key), E_INVALIDARG);
    ULONG sort = 9;
    ULONG display = 9;
    EXPECT_EQ(drive->GetDefaultColumn(0, &sort, &display), S_OK);
    EXPECT_EQ(sort + display, 0u);
}

TEST_F(desk, costs_nothing_when_it_is_gone) {
    const auto item = parse(*drive.Get(), L"Documents");
    const auto round = [&] {
        const auto folder = make_drive();
        const ITEMIDLIST* items[] = {item.get()};
        SFGAOF flags = ~SFGAOF{0};
        folder->GetAttributesOf(1, items, &flags);
        ComPtr<IShellFolder2> below;
        EXPECT_EQ(folder->BindToObject(item.get(), nullptr, IID_PPV_ARGS(&below)), S_OK);
        name_of(*folder.Get(), item.get(), SHGDN_FORPARSING);
        cell_of(*folder.Get(), item.get(), 4);
    };
    for (int i = 0; i < 10; ++i) {
        round();
    }
    const auto before = support::count_process();
    const std::size_t memory = support::allocated_bytes();
    count_requests();
    for (int i = 0; i < 300; ++i) {
        round();
    }
    const auto after = support::count_process();
    EXPECT_LE(after.handles, before.handles);
    EXPECT_LE(after.threads, before.threads);
    EXPECT_LE(support::allocated_bytes(), memory);
    EXPECT_EQ(count_requests(), 0u);
}

TEST_F(desk, serves_threads_of_any_apartment) {
    std::jthread([&] {
        const com::apartment multithreaded(COINIT_MULTITHREADED);
        const auto own = make_drive();
        const auto documents = open(*own.Get(), L"Documents");
        for (const auto& item : list(*documents.Get(), all)) {
            EXPECT_NE(name_of(*documents.Get(), item.get(), SHGDN_FORPARSING), L"");
            EXPECT_NE(cell_of(*documents.Get(), item.get(), 0), L"");
        }
        ComPtr<IShellView> view;
        EXPECT_EQ(documents->CreateViewObject(nullptr, IID_PPV_ARGS(&view)), S_OK);
    });
}

} // namespace

} // namespace shell
