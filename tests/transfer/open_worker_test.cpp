/// The worker that opens items, with real windows, the session process, and programs that note how
/// they were started.
#include "../commands/recording_player.h"

#include "companions.h"
#include "drive_access.h"
#include "driven_window.h"
#include "service_url.h"
#include "store_control.h"

#include "com/apartment.h"
#include "com/class_factory.h"
#include "com/media.h"
#include "com/module_lock.h"
#include "commands/association.h"
#include "commands/playlist.h"
#include "shell_items/seams.h"
#include "syncer/binding_manager.h"
#include "syncer/local_copies.h"
#include "transfer/opening/local_copy.h"
#include "transfer/opening/open_worker.h"
#include "utils/filesystem.h"
#include "vfs/file.h"
#include "vfs_quilldeck/session/session_objects.h"

#include <gtest/gtest.h>
#include <shellapi.h>

#include <fstream>
#include <iterator>
#include <memory>
#include <set>

namespace transfer {

namespace {

namespace fs = std::filesystem;

constexpr GUID dropped_on = {
    0x7d2c1f52, 0x91c4, 0x4c7e, {0x8b, 0x1d, 0x5e, 0x0a, 0x6f, 0x33, 0x90, 0x21}};
constexpr auto dropped_on_text = L"{7D2C1F52-91C4-4C7E-8B1D-5E0A6F339021}";
constexpr auto drop_option = "--drop-target";

std::wstring asked_for; ///< the path for which the user was to choose a program

/// Notes the paths that are dropped on it.
class drop_recorder final : public com::object<drop_recorder, IDropTarget> {
public:
    static inline fs::path record;
    static inline bool dropped = false;

    HRESULT STDMETHODCALLTYPE DragEnter(IDataObject*, DWORD, POINTL, DWORD*) override {
        return S_OK;
    }

    HRESULT STDMETHODCALLTYPE DragOver(DWORD, POINTL, DWORD*) override { return S_OK; }

    HRESULT STDMETHODCALLTYPE DragLeave() override { return S_OK; }

    HRESULT STDMETHODCALLTYPE Drop(IDataObject* data, DWORD, POINTL, DWORD*) override {
        FORMATETC format{CF_HDROP, nullptr, DVASPECT_CONTENT, -1, TYMED_HGLOBAL};
        com::medium block;
        com::check(data->GetData(&format, block.put()));
        std::wstring text = L"dropped";
        wchar_t path[MAX_PATH];
        const auto files = static_cast<HDROP>(block.get().hGlobal);
        for (UINT index = 0; DragQueryFileW(files, index, path, MAX_PATH) != 0; ++index) {
            text += std::wstring(L"|") + path;
        }
        commands::write_record(record, text);
        dropped = true;
        return S_OK;
    }
};

std::string read(const fs::path& path) {
    std::ifstream in(path, std::ios::binary);
    return in ? std::string(std::istreambuf_iterator(in), {}) : "none";
}

/// A folder of the store with files of one byte, opened by a class of the recording player.
class open_worker : public testing::Test {
protected:
    open_worker() {
        shell::set_seams({.commands = {.play = &commands::play,
                                       .ask_for_program =
                                           [](const std::wstring& path) {
                                               asked_for = path;
                                               return true;
                                           },
                                       .read_verb = &commands::read_verb}});
        const auto root = std::dynamic_pointer_cast<vfs::directory>(support::sign_in()->get_root());
        static int number = 0;
        folder = std::dynamic_pointer_cast<vfs::directory>(
            root->create_directory(L"Open " + std::to_wstring(++number)));
        for (const wchar_t* name :
             {L"a.qdtext", L"-b & 5% ^c%.QDTEXT", L"d.qdmore", L"e.qdmusic", L"f.qdmusic"}) {
            const auto file = std::dynamic_pointer_cast<vfs::file>(
                folder->create_and_open_file(name, vfs::modeWrite | vfs::modeOverwrite, 1));
            file->write("1", 1);
            file->close(1'600'000'000);
        }
        folder->get_items();
        player.set(L".qdmore", nullptr, L"qdplayer");
        player.set(L"qddrop\\shell\\open\\command", nullptr, L"nothing.exe");
        player.set(L"qddrop\\shell\\open\\DropTarget", L"CLSID", dropped_on_text);
        player.set(std::wstring(L"CLSID\\") + dropped_on_text + L"\\LocalServer32", nullptr,
                   L"\"" + player.executable() + L"\" --drop-target " + player.record().native());
        RegOpenKeyExW(HKEY_CLASSES_ROOT, L"qddrop", 0, KEY_READ, drop_class.put());
        control.reset();
    }

    fs::path place_of(const wchar_t* name) const {
        return local_copy_folder(L"demo", folder->get_path()) / name;
    }

    /// Starts the worker on the files of these names.
    void open(const std::vector<std::wstring>& names, HKEY key = nullptr, bool ask = false) {
        selection items{folder, {}, {}};
        for (const std::wstring& name : names) {
            items.records.emplace_back(folder->find_item_by_name(name, false));
        }
        ASSERT_EQ(open_selection(items, nullptr, key, ask), S_OK);
    }

    /// Answers the next box of that caption; its text.
    static std::wstring answer(const wchar_t* caption, int button) {
        const HWND box = support::await_dialog(caption);
        std::wstring text = support::message_of(box);
        EXPECT_TRUE(support::answer_box(box, button));
        return text;
    }

    static bool is_over() {
        return support::eventually([] { return com::module_lock::count() == 0; }) &&
               support::eventually([] { return !support::find_dialog(L"Downloading..."); });
    }

    com::apartment apartment;
    commands::recording_player player;
    support::store_control control{support::environment("QUILLDECK_TEST_HTTPS_URL")};
    std::shared_ptr<vfs::directory> folder;
    utils::unique_registry_key drop_class;
};

TEST_F(open_worker, starts_programs_with_copies_drops_and_links) {
    const std::wstring a = place_of(L"a.qdtext");
    const std::wstring b = place_of(L"-b & 5% ^c%.QDTEXT");
    const std::wstring d = place_of(L"d.qdmore");
    const std::wstring link =
        std::dynamic_pointer_cast<vfs::file>(folder->find_item_by_name(L"e.qdmusic", false))
            ->get_direct_link();
    const std::wstring list = utils::filesystem::get_special_directory(0) +
                              L"\\Quilldeck\\Intermediate files\\" + folder->get_name() + L".m3u";

    struct row {
        std::vector<std::wstring> names;
        bool by_drop_class;
        std::vector<std::wstring> starts;
    };

    const row rows[] = {
        {{L"a.qdtext"}, false, {L"--play|" + a}},
        {{L"-b & 5% ^c%.QDTEXT"}, false, {L"--play|" + b}},
        {{L"a.qdtext", L"-b & 5% ^c%.QDTEXT"}, false, {L"--play|" + a, L"--play|" + b}},
        // Several of one kind go to a drop target together, of several kinds one by one.
        {{L"a.qdtext", L"-b & 5% ^c%.QDTEXT"}, true, {L"dropped|" + a + L"|" + b}},
        {{L"a.qdtext", L"d.qdmore"}, false, {L"--play|" + a, L"--play|" + d}},
        {{L"e.qdmusic"}, false, {link}},
        {{L"e.qdmusic", L"f.qdmusic"}, false, {L"--play|" + list}},
    };
    for (const row& each : rows) {
        open(each.names, each.by_drop_class ? drop_class.get() : nullptr);
        // Programs that start beside each other note it in any order.
        std::multiset<std::wstring> found;
        for (const std::wstring& start : each.starts) {
            ASSERT_NO_THROW(found.insert(player.next_start())) << start;
        }
        EXPECT_EQ(found, std::multiset<std::wstring>(each.starts.begin(), each.starts.end()));
        EXPECT_TRUE(is_over());
    }
    // The user's choice wins over a class; of several kinds nobody is asked.
    open({L"a.qdtext"}, drop_class.get(), true);
    EXPECT_TRUE(is_over() && support::eventually([&] { return asked_for == a; }));
    // A program that cannot be started is told.
    open({L"a.qdtext"}, drop_class.get());
    EXPECT_EQ(answer(L"Error", IDOK), L"Can't execute file. Check for necessary disk space on the "
                                      L"system volume.");
    EXPECT_TRUE(is_over());
    EXPECT_EQ(open_selection({folder, {}, {}}, nullptr, nullptr, false), E_INVALIDARG);
}

TEST_F(open_worker, lets_an_edited_copy_go_back_and_never_loses_it) {
    const fs::path local = place_of(L"a.qdtext");
    open({L"a.qdtext", L"d.qdmore"});
    player.next_start();
    player.next_start();
    EXPECT_TRUE(is_over());
    // The program changes it, and it is opened again.
    std::ofstream(local) << "edited";
    control.reset();
    open({L"a.qdtext"});
    player.next_start();
    EXPECT_TRUE(is_over());
    EXPECT_EQ(read(local), "edited");
    const std::string bindings = read(syncer::binding_manager::get_bindings_path(L"demo"));
    EXPECT_NE(bindings.find("<binding><_mode>2</_mode><_type>1</_type>"), std::string::npos);
    EXPECT_NE(bindings.find("<dir_remote>Quilldeck/Open "), std::string::npos);
    EXPECT_NE(bindings.find("<filename>a.qdtext</filename>"), std::string::npos);
    // Of two files that were opened one after another the record knows both.
    EXPECT_TRUE(syncer::local_copies(L"demo").find(local));
    EXPECT_TRUE(syncer::local_copies(L"demo").find(place_of(L"d.qdmore")));

    std::dynamic_pointer_cast<vfs::file>(folder->find_item_by_name(L"a.qdtext", false))
        ->set_modification_date(4'000'000'000);
    folder->get_items();
    open({L"a.qdtext"});
    EXPECT_EQ(support::text_of(GetWindow(support::await_dialog(L"Error"), GW_OWNER)),
              L"Downloading...");
    answer(L"Error", IDNO);
    player.next_start();
    EXPECT_TRUE(is_over());
    EXPECT_EQ(read(local), "1");
    EXPECT_EQ(read(place_of(L"a (2).qdtext")), "edited");
}

TEST_F(open_worker, ends_when_the_session_does) {
    control.fault({{"kind", "error"},
                   {"action", "open_file_download"},
                   {"type", "0"},
                   {"name", "Refused"},
                   {"description", "Not now"}});
    open({L"a.qdtext", L"d.qdmore"});
    support::await_dialog(L"Refused");
    support::kill_companion(vfs_quilldeck::session_program);
    EXPECT_EQ(answer(L"Refused", IDCANCEL), L"Not now");
    EXPECT_EQ(answer(L"Internal error", IDOK), L"Not logged in");
    EXPECT_TRUE(is_over());
    EXPECT_FALSE(player.was_started());
    EXPECT_FALSE(fs::exists(place_of(L"a.qdtext")));
    // Nobody makes the mutex, once the worker has let it go.
    EXPECT_TRUE(support::eventually([] {
        return !utils::unique_handle(
            OpenMutexW(SYNCHRONIZE, FALSE, vfs_quilldeck::transfer_mutex_name));
    }));
    open({L"a.qdtext"});
    EXPECT_EQ(answer(L"Internal error", IDOK), L"Error opening mutex");
    EXPECT_TRUE(is_over());
}

/// In the program that takes drops: serves until the first one.
int take_drop() {
    const com::apartment apartment;
    com::class_factory factory(&com::create<drop_recorder>);
    DWORD cookie = 0;
    com::check(CoRegisterClassObject(dropped_on, &factory, CLSCTX_LOCAL_SERVER, REGCLS_SINGLEUSE,
                                     &cookie));
    support::eventually([] { return drop_recorder::dropped; });
    // Its caller waits for the end of the call.
    CoRevokeClassObject(cookie);
    support::eventually([] { return com::module_lock::count() == 0; });
    return 0;
}

} // namespace

} // namespace transfer

int main(int argc, char** argv) {
    if (argc > 2 && std::string(argv[1]) == transfer::drop_option) {
        transfer::drop_recorder::record = argv[2];
        return transfer::take_drop();
    }
    commands::record_if_player();
    testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
