/// What is the drive's own: how it connects, and what it hands out.
#include "driven_window.h"
#include "signed_in.h"
#include "unclosable_handle.h"

#include "shell/extract_icon.h"
#include "shell/item_properties.h"
#include "shell/view_callback.h"
#include "shell_items/seams.h"
#include "transfer/stream.h"
#include "utils/module.h"
#include "vfs_quilldeck/session/identity_block.h"
#include "vfs_quilldeck/session/session_objects.h"

#include <latch>
#include <thread>

namespace shell {

namespace {

/// Holds a named mutex for as long as it lives, on a thread of its own.
class holder {
public:
    explicit holder(const wchar_t* name) {
        std::latch held(1);
        m_thread = std::jthread([&held, name](const std::stop_token& stop) {
            utils::named_mutex mutex(name);
            const utils::mutex_hold hold(mutex);
            held.count_down();
            while (!stop.stop_requested()) {
                Sleep(1);
            }
        });
        held.wait();
    }

private:
    std::jthread m_thread;
};

class desk : public signed_in {
protected:
    desk() {
        asked_to_sign_in = 0;
        signs_in = true;
        set_seams({.dialogs = {[](utils::named_mutex&, HWND) {
                       ++asked_to_sign_in;
                       if (signs_in) {
                           sign_in();
                       }
                       return signs_in;
                   }},
                   .transfer = {.create_stream = transfer::create_stream}});
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
    // Whoever is asked to sign in elsewhere keeps nobody here from work.
    const holder dialog_elsewhere(vfs_quilldeck::login_mutex_name);
    vfs_quilldeck::write_shared_user_info(utils::own_module(), {});
    signs_in = false;
    void* result = nullptr;
    const auto some = CItemIDList(PIDLDATA()).to_list();
    EXPECT_EQ(drive->SetNameOf(nullptr, some.get(), L"x", SHGDN_NORMAL, nullptr), E_FAIL);
    EXPECT_EQ(drive->BindToObject(some.get(), nullptr, __uuidof(IShellFolder), &result), E_FAIL);
    EXPECT_EQ(asked_to_sign_in, 0);

    ComPtr<IEnumIDList> items;
    EXPECT_EQ(drive->EnumObjects(nullptr, all_items, &items), S_FALSE);
    EXPECT_FALSE(items);
    EXPECT_EQ(asked_to_sign_in, 1);
    signs_in = true;
    EXPECT_EQ(drive->EnumObjects(nullptr, 0, &items), S_FALSE);
    EXPECT_FALSE(items);
    EXPECT_EQ(asked_to_sign_in, 2);

    // Whoever connected once stays so; a child asks again.
    const auto child = open(*drive.Get(), L"Documents");
    vfs_quilldeck::write_shared_user_info(utils::own_module(), {});
    EXPECT_FALSE(list(*drive.Get(), all_items).empty());
    EXPECT_EQ(asked_to_sign_in, 2);
    EXPECT_FALSE(list(*child.Get(), all_items).empty());
    EXPECT_EQ(asked_to_sign_in, 3);
}

TEST_F(desk, shows_failures_of_the_store) {
    const auto documents = open(*drive.Get(), L"Documents");
    ASSERT_FALSE(list(*documents.Get(), all_items).empty());
    control.fault({{"kind", "garbage"},
                   {"body", "<R><Error><Type>2</Type><Name>No way</Name>"
                            "<Description>The store is shut</Description></Error></R>"}});
    std::jthread user([] {
        const HWND box = support::await_dialog(L"No way");
        EXPECT_EQ(support::message_of(box), L"The store is shut");
        support::answer_box(box, IDOK);
    });
    EXPECT_TRUE(list(*documents.Get(), all_items).empty());
}

TEST_F(desk, marks_what_a_folder_holds) {
    RegSetKeyValueW(HKEY_LOCAL_MACHINE, L"Software\\Classes\\.qdsong", L"PerceivedType", REG_SZ,
                    L"AUDIO", 12);
    const auto folder = make_folder(L"marks");
    const auto directory = directory_of(*folder.Get());
    EXPECT_TRUE(list(*folder.Get(), all_items).empty());
    for (const auto* name : {L"a.unknown", L"qdsong", L"b.qdsong.x"}) {
        directory->create_file(name);
    }
    EXPECT_EQ(list(*folder.Get(), all_items).size(), 3u);
    directory->create_file(L"c.qdsong");
    list(*folder.Get(), SHCONTF_FOLDERS);
    EXPECT_EQ(directory->get_folder_flags(), vfs::folder_initial);
    list(*folder.Get(), SHCONTF_NONFOLDERS);
    EXPECT_EQ(directory->get_folder_flags(), vfs::folder_initial | vfs::folder_has_audio);
    RegDeleteTreeW(HKEY_LOCAL_MACHINE, L"Software\\Classes\\.qdsong");
}

TEST_F(desk, enters_nothing_in_the_trash) {
    make_folder(L"thrown away");
    directory_of(*drive.Get())->delete_item(L"thrown away", true);
    const auto trash = open(*drive.Get(), L"Trash");
    const auto item = parse(*trash.Get(), L"thrown away");
    EXPECT_EQ(attributes_of(*trash.Get(), {item.get()}), 0x50000068u) << "to be deleted, no more";
    const auto inside = open(*trash.Get(), L"thrown away");
    void* result = this;
    EXPECT_EQ(inside->BindToObject(item.get(), nullptr, __uuidof(IShellFolder), &result),
              E_NOINTERFACE);
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

    CItemIDList lost(file.get(), false);
    lost.last().id[0] = L'x';
    const auto lost_list = lost.to_list();
    control.reset();
    com::variant old_size;
    EXPECT_EQ(folder->GetDetailsEx(lost_list.get(), &key, &old_size.get()), S_OK);
    EXPECT_EQ(old_size.get().ullVal, 0u);
    EXPECT_TRUE(control.log().empty()) << "a view that shows cells does not wait for the store";
    const auto directory = parse(*drive.Get(), L"streams");
    const auto bind = [](IShellFolder& from, const com::unique_id_list& item, const IID& iid) {
        ComPtr<IUnknown> result;
        return from.BindToObject(item.get(), nullptr, iid, &result);
    };
    EXPECT_EQ(bind(*folder.Get(), lost_list, __uuidof(IStream)), E_NOINTERFACE);
    EXPECT_EQ(bind(*folder.Get(), lost_list, __uuidof(IShellFolder)), E_FAIL);
    EXPECT_EQ(bind(*drive.Get(), directory, __uuidof(IStream)), E_NOINTERFACE);
    // A folder object may stand on a file.
    const auto on_file = open(*folder.Get(), L"new.txt");
    EXPECT_EQ(on_file->CreateViewObject(nullptr, IID_PPV_ARGS(&stream)), S_OK);
    EXPECT_TRUE(list(*on_file.Get(), all_items).empty());
}

TEST_F(desk, leaves_nothing_behind_where_no_stream_can_be_made) {
    const auto folder = make_folder(L"no streams");
    ComPtr<IStorage> storage;
    ASSERT_EQ(folder.As(&storage), S_OK);
    ComPtr<IStream> stream;
    for (const auto* name : {L"a\\b", L"a/b", L"..", L"a:b", L""}) {
        EXPECT_EQ(storage->CreateStream(name, STGM_CREATE, 0, 0, &stream), E_FAIL);
    }
    set_seams({.transfer = {.create_stream = [](const vfs::item_ptr&, REFIID, void**) {
                   return E_OUTOFMEMORY;
               }}});
    EXPECT_EQ(storage->CreateStream(L"a", STGM_CREATE, 0, 0, &stream), E_FAIL);
    EXPECT_FALSE(stream);
    EXPECT_TRUE(directory_of(*folder.Get())->get_items().empty());
}

TEST_F(desk, hands_out_what_views_ask_for) {
    const auto pictures = open(*drive.Get(), L"Pictures");
    const auto file = parse(*pictures.Get(), L"Dusk.jpg");
    const auto directory = parse(*pictures.Get(), L"Holidays 2026");

    const struct {
        std::vector<const ITEMIDLIST*> items;
        IID iid;
        HRESULT status;
    } rows[] = {
        {{file.get()}, __uuidof(IExtractIconW), S_OK},
        {{file.get(), file.get()}, __uuidof(IExtractIconW), E_FAIL},
        {{file.get()}, __uuidof(IExtractImage), S_OK},
        {{directory.get()}, __uuidof(IExtractImage), E_FAIL},
        {{}, __uuidof(IExtractImage), E_INVALIDARG},
        {{file.get()}, __uuidof(IDataObject), E_NOINTERFACE},
    };

    for (auto [items, iid, status] : rows) {
        ComPtr<IUnknown> result(drive.Get());
        EXPECT_EQ(pictures->GetUIObjectOf(nullptr, static_cast<UINT>(items.size()), items.data(),
                                          iid, nullptr, &result),
                  status);
        EXPECT_EQ(result != nullptr, status == S_OK);
    }
    ComPtr<ITransferDestination> destination;
    EXPECT_EQ(pictures->CreateViewObject(nullptr, IID_PPV_ARGS(&destination)), S_OK);
    ITEMIDLIST* place = nullptr;
    EXPECT_EQ(com::make<CShellFolderImpl>()->GetCurFolder(&place), S_FALSE) << "it has none yet";
    EXPECT_EQ(place, nullptr);

    const auto callback = com::make<CShellFolderViewCBImpl>(drive_list());
    const ITEMIDLIST* watched = nullptr;
    LONG events = 0;
    const auto wparam = reinterpret_cast<WPARAM>(&watched);
    const auto lparam = reinterpret_cast<LPARAM>(&events);
    EXPECT_EQ(callback->MessageSFVCB(49, wparam, lparam), S_OK);
    EXPECT_EQ(bytes_of(watched), bytes_of(drive_list().get()));
    EXPECT_EQ(events, 0x7FFFFFFF);
    for (const UINT message : {5U, 6U, 58U}) {
        events = 1;
        EXPECT_EQ(callback->MessageSFVCB(message, wparam, lparam), S_OK);
        EXPECT_EQ(events, message == 58 ? 0 : 1) << message;
    }
    EXPECT_EQ(callback->MessageSFVCB(50, wparam, lparam), E_NOTIMPL);
}

TEST_F(desk, goes_with_a_mutex_that_cannot_be_closed) {
    const support::unclosable_handle handle;
    const auto stuck = make_drive();
    EXPECT_TRUE(handle.protect());
}

TEST_F(desk, serves_threads_of_any_apartment) {
    std::jthread([] {
        const com::apartment multithreaded(COINIT_MULTITHREADED);
        const auto documents = open(*make_drive().Get(), L"Documents");
        EXPECT_FALSE(list(*documents.Get(), all_items).empty());
        ComPtr<IShellView> view;
        EXPECT_EQ(documents->CreateViewObject(nullptr, IID_PPV_ARGS(&view)), S_OK);
    });
}

} // namespace

} // namespace shell
