/// Drops as the shell makes them, with real windows: local and virtual files, from this process and
/// another, on this thread and on one of their own.
#include "../shell/signed_in.h"

#include "driven_window.h"
#include "process_census.h"
#include "second_process.h"
#include "virtual_files.h"

#include "shell_items/seams.h"
#include "transfer/drop_source.h"
#include "transfer/drop_target.h"
#include "transfer/stream.h"

#include <atomic>
#include <filesystem>
#include <fstream>
#include <functional>
#include <future>
#include <map>
#include <memory>
#include <thread>

namespace transfer {

namespace {

namespace fs = std::filesystem;

using Microsoft::WRL::ComPtr;
using transfer_test::virtual_file;
using transfer_test::virtual_files;
using transfer_test::virtual_folder;
using formats_told = std::vector<std::pair<UINT, DWORD>>;

using directory_ptr = std::shared_ptr<vfs::directory>;

/// What a source is told at the end of each drop.
formats_told told_at_end(DWORD effect) {
    return {{com::registered_formats.performed_drop_effect, effect},
            {com::registered_formats.paste_succeeded, effect}};
}

/// Presses, in boxes of this process, what `choose` says for a caption, until it goes.
class answering_user {
public:
    explicit answering_user(std::function<int(const std::wstring& caption)> choose)
        : m_thread([this, choose = std::move(choose)](const std::stop_token& stop) {
              while (!stop.stop_requested()) {
                  for (const wchar_t* caption :
                       {L"Error", L"Error creating folder", L"Error creating file",
                        L"Confirm file replace", L"Confirm folder merge", L"Internal error"}) {
                      if (const HWND box = support::find_dialog(caption)) {
                          m_texts.push_back(support::message_of(box));
                          m_owners.push_back(support::text_of(GetWindow(box, GW_OWNER)));
                          support::answer_box(box, choose(caption));
                      }
                  }
                  Sleep(1);
              }
          }) {}

    /// The texts of the boxes and the titles of what they stood on, once no more are to come.
    std::vector<std::wstring> texts() {
        join();
        return m_texts;
    }

    std::vector<std::wstring> owners() {
        join();
        return m_owners;
    }

private:
    void join() {
        m_thread.request_stop();
        if (m_thread.joinable()) {
            m_thread.join();
        }
    }

    std::vector<std::wstring> m_texts;
    std::vector<std::wstring> m_owners;
    std::jthread m_thread;
};

class drops : public shell::signed_in {
protected:
    drops() {
        shell::set_seams({.transfer = {.create_stream = &create_stream,
                                       .create_drop_target = &create_drop_target,
                                       .create_drop_source = &create_drop_source}});
        top = shell::directory_of(*drive.Get());
        static int number = 0;
        name =
            L"Drops " + std::to_wstring(GetCurrentProcessId()) + L" " + std::to_wstring(++number);
        place = std::dynamic_pointer_cast<vfs::directory>(top->create_directory(name));
        folder = shell::open(*drive.Get(), name);
        fs::create_directories(local / L"tree" / L"inner");
        put(local / L"tree" / L"a.txt", "alpha");
        put(local / L"tree" / L"inner" / L"b.bin", std::string(70'000, 'b'));
    }

    ~drops() override {
        control.reset();
        top->delete_item(place, false);
        fs::remove_all(local);
    }

    static void put(const fs::path& path, const std::string& content) {
        std::ofstream(path, std::ios::binary) << content;
    }

    ComPtr<IDropTarget> target(IShellFolder* on = nullptr) {
        ComPtr<IDropTarget> made;
        com::check((on ? on : folder.Get())->CreateViewObject(nullptr, IID_PPV_ARGS(&made)));
        return made;
    }

    /// A source of local files.
    ComPtr<virtual_files> paths(const std::vector<std::wstring>& dropped) {
        auto data = com::make<virtual_files>();
        const auto block = transfer_test::dropped_paths(dropped);
        const com::global_lock locked(block.get());
        data->blocks.emplace_back(CF_HDROP,
                                  std::string(reinterpret_cast<const char*>(locked.bytes().data()),
                                              locked.bytes().size()));
        return data;
    }

    /// As the shell does it. Answers what `Drop` does, and the effect.
    static std::pair<HRESULT, DWORD> drop(IDropTarget& on, IDataObject& data, DWORD keys = 0) {
        DWORD effect = DROPEFFECT_COPY | DROPEFFECT_MOVE;
        com::check(on.DragEnter(&data, keys, {}, &effect));
        effect = DROPEFFECT_COPY | DROPEFFECT_MOVE;
        const HRESULT status = on.Drop(&data, keys, {}, &effect);
        return {status, effect};
    }

    /// The sizes of all files below, by their ways; -1 for a folder.
    static std::map<std::wstring, std::int64_t> tree_of(vfs::directory& where,
                                                        const std::wstring& way = {}) {
        std::map<std::wstring, std::int64_t> found;
        for (const vfs::item_ptr& item : where.get_items()) {
            const std::wstring path = way + item->get_name();
            if (const auto file = std::dynamic_pointer_cast<vfs::file>(item)) {
                found[path] = file->get_size();
            } else {
                found[path] = -1;
                found.merge(tree_of(dynamic_cast<vfs::directory&>(*item), path + L"/"));
            }
        }
        return found;
    }

    std::string read(const std::wstring& way) {
        vfs::item_ptr item = place;
        for (const auto& part : fs::path(way)) {
            item = std::dynamic_pointer_cast<vfs::directory>(item)->find_item_by_name(part, true);
        }
        const auto file = std::dynamic_pointer_cast<vfs::file>(item)->duplicate();
        std::string content(static_cast<std::size_t>(file->get_size()), '\0');
        file->open(vfs::modeRead, 0);
        file->read(content.data(), static_cast<std::uint32_t>(content.size()));
        file->close(0);
        return content;
    }

    /// A selection of this very program, as another process would bring it: `files` of `from`.
    ComPtr<virtual_files> our_own(const std::vector<virtual_file>& files,
                                  const std::vector<std::wstring>& from) {
        auto data = com::make<virtual_files>();
        data->files = files;
        const DWORD mark = 1;
        data->blocks.emplace_back(com::registered_formats.quilldeck_data_object,
                                  std::string(reinterpret_cast<const char*>(&mark), sizeof mark));
        shell::CItemIDList list(shell::drive_list().get(), true);
        directory_ptr at = top;
        for (const std::wstring& part : from) {
            const auto item = at->find_item_by_name(part, true);
            list.append(shell::PIDLDATA(item));
            at = std::dynamic_pointer_cast<vfs::directory>(item);
        }
        const com::unique_id_list flat = list.to_list();
        const UINT header[] = {0, 8};
        std::string array(reinterpret_cast<const char*>(header), sizeof header);
        array += shell::bytes_of(flat.get()) + std::string(3, '\0');
        data->blocks.emplace_back(com::registered_formats.shell_id_list_array, array);
        return data;
    }

    ComPtr<IShellFolder2> drive = shell::make_drive();
    directory_ptr top;
    std::wstring name;
    directory_ptr place;
    ComPtr<IShellFolder2> folder;
    const fs::path local =
        fs::temp_directory_path() / (L"dropped " + std::to_wstring(GetCurrentProcessId()));
    const std::map<std::wstring, std::int64_t> whole_tree{
        {L"tree", -1}, {L"tree/a.txt", 5}, {L"tree/inner", -1}, {L"tree/inner/b.bin", 70'000}};
    const std::vector<virtual_file> virtual_tree{virtual_folder(L"tree"),
                                                 {L"tree\\a.txt", "alpha"},
                                                 virtual_folder(L"tree\\inner"),
                                                 {L"tree\\inner\\b.bin", std::string(70'000, 'b')}};
};

TEST_F(drops, answer_with_the_effect_that_keys_and_source_allow) {
    struct row {
        DWORD keys;
        DWORD allowed;
        DWORD answer;
    };

    const row rows[] = {
        {0, 3, 1},        {MK_SHIFT, 3, 2}, {MK_CONTROL, 3, 1}, {MK_SHIFT | MK_CONTROL, 3, 2},
        {MK_SHIFT, 1, 1}, {0, 2, 2},        {0, 0, 1},          {MK_SHIFT, 0, 1},
        {MK_SHIFT, 4, 1}, {MK_SHIFT, 6, 2}, {0, 4, 1},
    };
    const auto on = target();
    const auto files = paths({local.native()});
    DWORD effect = 3;
    EXPECT_EQ(on->DragOver(0, {}, &effect), S_OK);
    EXPECT_EQ(effect, 0U) << "nothing is dragged";
    for (const row& each : rows) {
        effect = each.allowed;
        EXPECT_EQ(on->DragEnter(files.Get(), each.keys, {}, &effect), S_OK);
        EXPECT_EQ(effect, each.answer);
        effect = each.allowed;
        EXPECT_EQ(on->DragOver(each.keys, {}, &effect), S_OK);
        EXPECT_EQ(effect, each.answer);
    }
    EXPECT_EQ(on->DragLeave(), S_OK);
    effect = 3;
    on->DragOver(0, {}, &effect);
    EXPECT_EQ(effect, 0U);

    const auto foreign = com::make<virtual_files>();
    EXPECT_EQ(drop(*on.Get(), *foreign.Get()), std::pair(S_OK, DWORD{0}));
    EXPECT_TRUE(foreign->told.empty());
    EXPECT_EQ(on->DragEnter(nullptr, 0, {}, &effect), E_POINTER);
    EXPECT_EQ(on->DragEnter(files.Get(), 0, {}, nullptr), E_POINTER);
    EXPECT_EQ(on->DragOver(0, {}, nullptr), E_POINTER);
    EXPECT_EQ(on->Drop(nullptr, 0, {}, &effect), E_POINTER);
    EXPECT_EQ(on->Drop(files.Get(), 0, {}, nullptr), E_POINTER);

    ComPtr<IDropSource> source;
    ASSERT_EQ(drive->GetUIObjectOf(nullptr, 0, nullptr, __uuidof(IDropSource), nullptr,
                                   reinterpret_cast<void**>(source.GetAddressOf())),
              S_OK);
    EXPECT_EQ(source->QueryContinueDrag(TRUE, MK_LBUTTON), DRAGDROP_S_CANCEL);
    EXPECT_EQ(source->QueryContinueDrag(FALSE, MK_LBUTTON | MK_RBUTTON), S_OK);
    EXPECT_EQ(source->QueryContinueDrag(FALSE, MK_RBUTTON), DRAGDROP_S_DROP);
    EXPECT_EQ(source->GiveFeedback(DROPEFFECT_COPY), DRAGDROP_S_USEDEFAULTCURSORS);
}

TEST_F(drops, bring_local_and_virtual_trees) {
    const auto on = target();
    const auto files = paths({(local / L"tree").native()});
    EXPECT_EQ(drop(*on.Get(), *files.Get()), std::pair(S_OK, DWORD{DROPEFFECT_COPY}));
    EXPECT_EQ(files->told, told_at_end(DROPEFFECT_COPY));
    EXPECT_EQ(tree_of(*place), whole_tree);
    EXPECT_EQ(read(L"tree/inner/b.bin"), std::string(70'000, 'b'));
    EXPECT_TRUE(fs::exists(local / L"tree" / L"a.txt"));

    // Once more, as virtual files: the folders merge, the first file is replaced, the other is not,
    // so that the whole is no success and a source that moves keeps its originals.
    auto other = virtual_tree;
    other[1].content = "a long alpha";
    const auto data = com::make<virtual_files>();
    data->files = other;
    // A source that offers both is read through the descriptors.
    data->blocks = paths({L"C:\\nothing"})->blocks;
    int replaced = 0;
    answering_user user([&replaced](const std::wstring& caption) {
        return caption == L"Confirm file replace" && ++replaced > 1 ? IDNO : IDYES;
    });
    EXPECT_EQ(drop(*on.Get(), *data.Get(), MK_SHIFT), std::pair(S_OK, DWORD{0}));
    EXPECT_EQ(user.texts(), (std::vector<std::wstring>{
                                L"Folder with name 'tree' already exists. Merge folder contents?",
                                L"File with name 'a.txt' already exists. Replace?",
                                L"Folder with name 'inner' already exists. Merge folder contents?",
                                L"File with name 'b.bin' already exists. Replace?"}));
    EXPECT_EQ(user.owners(), std::vector<std::wstring>(4, L"Moving..."));
    EXPECT_EQ(data->told, told_at_end(0));
    EXPECT_EQ(read(L"tree/a.txt"), "a long alpha");

    // On a file it comes to lie beside it.
    const com::unique_id_list file =
        shell::parse(*shell::open(*folder.Get(), L"tree").Get(), L"a.txt");
    const ITEMIDLIST* list = file.get();
    ComPtr<IDropTarget> on_file;
    ASSERT_EQ(shell::open(*folder.Get(), L"tree")
                  ->GetUIObjectOf(nullptr, 1, &list, __uuidof(IDropTarget), nullptr,
                                  reinterpret_cast<void**>(on_file.GetAddressOf())),
              S_OK);
    put(local / L"beside.txt", "beside");
    EXPECT_EQ(drop(*on_file.Get(), *paths({(local / L"beside.txt").native()}).Get()).second,
              DWORD{DROPEFFECT_COPY});
    EXPECT_EQ(read(L"tree/beside.txt"), "beside");

    // What no store can take is told of, and the rest arrives; yet not all has.
    answering_user told([](const std::wstring&) { return IDOK; });
    EXPECT_EQ(drop(*on.Get(), *paths({L"C:\\", (local / L"beside.txt").native()}).Get()).second,
              0U);
    const auto texts = told.texts();
    ASSERT_EQ(texts.size(), 1U);
    EXPECT_NE(texts[0].find(L"'C:\\'"), std::wstring::npos);
    EXPECT_EQ(read(L"beside.txt"), "beside");
}

TEST_F(drops, serve_hosts_without_an_apartment_of_their_own) {
    std::jthread([&] {
        const com::apartment shared(COINIT_MULTITHREADED);
        const auto there = shell::open(*shell::make_drive().Get(), name);
        for (const bool async : {false, true}) {
            const auto data = com::make<virtual_files>();
            data->files = virtual_tree;
            data->async = async;
            EXPECT_EQ(drop(*target(there.Get()).Get(), *data.Get()).first, S_OK);
            EXPECT_TRUE(support::eventually([&] { return data->ended == (async ? 1 : 0); }));
            EXPECT_EQ(tree_of(*place), whole_tree);
            place->delete_item(place->find_item_by_name(L"tree", true), false);
        }
    }).join();
}

TEST_F(drops, end_by_the_button_of_the_progress_dialog) {
    const auto data = com::make<virtual_files>();
    data->files = {{.path = L"slow.bin",
                    .content = std::string(2'000'000, 's'),
                    .piece = 4'000,
                    .delay = std::chrono::milliseconds(10)}};
    std::jthread user([] {
        const HWND dialog = support::await_dialog(L"Copying...");
        Sleep(500);
        support::press(dialog, IDCANCEL);
    });
    EXPECT_EQ(drop(*target().Get(), *data.Get()), std::pair(S_OK, DWORD{0}));
    EXPECT_EQ(data->told, told_at_end(0));
    EXPECT_TRUE(tree_of(*place).empty());
}

TEST_F(drops, run_on_a_thread_of_their_own_when_the_source_wants_it) {
    for (const bool local_ones : {false, true}) {
        const auto data =
            local_ones ? paths({(local / L"tree").native()}) : com::make<virtual_files>();
        if (!local_ones) {
            data->files = virtual_tree;
        }
        data->async = true;
        EXPECT_EQ(drop(*target().Get(), *data.Get(), MK_SHIFT), std::pair(S_OK, DWORD{0}));
        EXPECT_EQ(data->begun, 0) << "it was not waited for";
        EXPECT_TRUE(support::eventually([&] { return data->ended == 1; }));
        EXPECT_EQ(data->begun, 1);
        // What is written to the source is lost in the proxy of the platform at hand.
        EXPECT_EQ(data->end, std::pair(S_OK, DWORD{DROPEFFECT_MOVE}));
        EXPECT_EQ(tree_of(*place), whole_tree);
        place->delete_item(place->find_item_by_name(L"tree", true), false);
        // The last reference goes with the thread.
        EXPECT_TRUE(support::eventually([&] {
            data->AddRef();
            return data->Release() == 1;
        }));
    }
    // A source that changes its mind.
    const auto data = com::make<virtual_files>();
    data->files = virtual_tree;
    data->async = true;
    drop(*target().Get(), *data.Get());
    data->async = false;
    const HWND box = support::await_dialog(L"Internal error");
    EXPECT_EQ(support::message_of(box), L"Unable to start async operation - not supported");
    EXPECT_TRUE(support::answer_box(box, IDOK));
    EXPECT_TRUE(support::eventually([&] {
        data->AddRef();
        return data->Release() == 1;
    }));
    EXPECT_TRUE(data->told.empty());
}

TEST_F(drops, let_the_store_move_its_own_items) {
    place->create_directory(L"from");
    const auto from =
        std::dynamic_pointer_cast<vfs::directory>(place->find_item_by_name(L"from", true));
    from->create_file(L"first");
    from->create_directory(L"sub");
    std::dynamic_pointer_cast<vfs::directory>(from->find_item_by_name(L"sub", true))
        ->create_file(L"second");
    place->create_directory(L"to");
    const auto selection =
        our_own({{L"first"}, virtual_folder(L"sub"), {L"sub\\second"}}, {name, L"from"});

    // Where they are already nothing happens, also through a proxy.
    EXPECT_EQ(
        drop(*target(shell::open(*folder.Get(), L"from").Get()).Get(), *selection.Get()).first,
        E_FAIL);
    EXPECT_TRUE(selection->told.empty());

    control.reset();
    EXPECT_EQ(
        drop(*target(shell::open(*folder.Get(), L"to").Get()).Get(), *selection.Get(), MK_SHIFT),
        std::pair(S_OK, DWORD{0}));
    int copied = 0;
    for (const auto& request : control.log()) {
        copied += request.value_of("action") == "copy_file" && request.value_of("move") == "1";
        EXPECT_EQ(request.value_of("action").find("load"), std::string::npos) << "no byte is moved";
    }
    EXPECT_EQ(copied, 2);
    // The source has nothing to delete; its folders stay behind, empty.
    EXPECT_EQ(selection->told, told_at_end(0));
    EXPECT_EQ(tree_of(*place), (std::map<std::wstring, std::int64_t>{{L"from", -1},
                                                                     {L"from/sub", -1},
                                                                     {L"to", -1},
                                                                     {L"to/first", 0},
                                                                     {L"to/sub", -1},
                                                                     {L"to/sub/second", 0}}));
}

/// What fails from its n-th time on, in a drop of a tree on a folder: "request", "read", "write",
/// or the user's patience with a "prompt".
struct trouble {
    std::string what;
    bool internal;
    bool async; ///< and a move; otherwise a copy on this thread
    bool is_over = false;

    bool is(const char* kind) const { return what == kind; }
};

class troubled_drops : public drops {
protected:
    /// Drops while the n-th of its kind fails; answers whether there was one. Nothing that the user
    /// did not agree to lose is lost, and nothing stands there in part.
    bool fails(const trouble& each, int number) {
        const auto from = make(*place, L"from");
        const auto to = make(*place, L"to");
        if (each.is("prompt")) {
            const auto tree = make(*to, L"tree");
            put_old(*tree, L"a.txt");
            each.internal ? put_old(*to, L"c.txt") : put_old(*make(*tree, L"inner"), L"b.bin");
        }
        const ComPtr<virtual_files> data = each.internal ? inside(*from) : outside();
        data->async = each.async;
        const auto opened = shell::open(*folder.Get(), L"to");
        shell::item_of(*opened.Get());
        begin(each, number, *data.Get());
        std::atomic<int> asked = 0;
        answering_user user([&](const std::wstring&) {
            // Ignore where there is such a button, otherwise Cancel.
            return !each.is("prompt") ? IDIGNORE : ++asked == number ? IDCANCEL : IDYES;
        });
        const auto [status, effect] =
            drop(*target(opened.Get()).Get(), *data.Get(), each.async ? MK_SHIFT : 0);
        EXPECT_EQ(status, S_OK);
        if (each.async) {
            EXPECT_TRUE(support::eventually([&] { return data->ended == 1; }));
        }
        const DWORD told = each.async ? data->end.second : effect;
        EXPECT_EQ(data->told, each.async ? formats_told() : told_at_end(told));
        bool failed = !user.texts().empty();
        if (each.is("request")) {
            failed = failed || control.log().size() >= static_cast<std::size_t>(number);
        } else if (each.is("prompt")) {
            failed = asked >= number;
        }
        control.reset();
        each.internal ? look_inside(each, number) : look_outside(each, number, told);
        EXPECT_TRUE(failed || each.internal || told != 0);
        // The last reference goes with the thread.
        EXPECT_TRUE(support::eventually([&] {
            data->AddRef();
            return data->Release() == 1;
        }));
        for (const auto& item : place->get_items()) {
            place->delete_item(item, false);
        }
        return failed;
    }

private:
    static constexpr std::int64_t old_size = 3;

    static directory_ptr make(vfs::directory& where, const wchar_t* named) {
        return std::dynamic_pointer_cast<vfs::directory>(where.create_directory(named));
    }

    static void put_old(vfs::directory& where, const wchar_t* named) {
        const auto file = std::dynamic_pointer_cast<vfs::file>(
            where.create_and_open_file(named, vfs::modeWrite | vfs::modeOverwrite, old_size));
        file->write("old", old_size);
        file->close(1);
    }

    ComPtr<virtual_files> outside() const {
        auto foreign = com::make<virtual_files>();
        foreign->files = virtual_tree;
        return foreign;
    }

    ComPtr<virtual_files> inside(vfs::directory& from) {
        make(from, L"tree")->create_file(L"a.txt");
        from.create_file(L"c.txt");
        return our_own({virtual_folder(L"tree"), {L"tree\\a.txt"}, {L"c.txt"}}, {name, L"from"});
    }

    void begin(const trouble& each, int number, virtual_files& data) {
        control.reset();
        const std::string passed = std::to_string(number - 1);
        if (each.is("request")) {
            control.fault({{"kind", "error"},
                           {"skip", passed},
                           {"type", "0"},
                           {"name", "Refused"},
                           {"description", "Not now"}});
        } else if (each.is("read")) {
            *data.reads_until_failure = number;
        } else if (each.is("write")) {
            control.fault(
                {{"kind", "cut_upload"}, {"bytes", "0"}, {"skip", passed}, {"count", "99"}});
        }
    }

    void look_outside(const trouble& each, int number, DWORD told) {
        const auto there = tree_of(*place);
        for (const auto& [way, size] : whole_tree) {
            const auto found = there.find(L"to/" + way);
            EXPECT_TRUE(told == 0 || found != there.end());
            if (found == there.end()) {
                EXPECT_FALSE(each.is("prompt"));
            } else if (size < 0 || !each.is("prompt")) {
                EXPECT_EQ(found->second, size);
            } else {
                // The questions are two for each file, about its folder and about itself.
                EXPECT_EQ(found->second, number > (way == L"tree/a.txt" ? 2 : 4) ? size : old_size);
            }
        }
    }

    void look_inside(const trouble& each, int number) {
        const auto there = tree_of(*place);
        for (const wchar_t* way : {L"tree/a.txt", L"c.txt"}) {
            const auto begun = there.find(std::wstring(L"from/") + way);
            const auto moved = there.find(std::wstring(L"to/") + way);
            EXPECT_TRUE(begun != there.end() || moved != there.end());
            if (each.is("prompt")) {
                ASSERT_NE(moved, there.end());
                EXPECT_EQ(moved->second == 0, number > (way[0] == L't' ? 2 : 3));
            }
        }
    }
};

TEST_F(troubled_drops, lose_nothing_and_leave_nothing_behind) {
    std::vector<trouble> troubles;
    for (const bool internal : {false, true}) {
        for (const bool async : {false, true}) {
            troubles.push_back({"request", internal, async});
            troubles.push_back({"prompt", internal, async});
            if (!internal) {
                troubles.push_back({"read", internal, async});
                troubles.push_back({"write", internal, async});
            }
        }
    }
    support::process_census before;
    std::size_t kept = 0;
    long objects = 0;
    for (int number = 1; std::ranges::count(troubles, false, &trouble::is_over) > 0; ++number) {
        ASSERT_LT(number, 60);
        for (trouble& each : troubles) {
            SCOPED_TRACE(each.what + std::to_string(number) + (each.internal ? " internal" : "") +
                         (each.async ? " async move" : ""));
            const std::size_t handles = support::count_process().handles;
            each.is_over = each.is_over || !fails(each, number);
            if (each.async && !each.internal && number > 1) {
                // The platform's proxies keep a handle for each interface that the other side does
                // not know, and each stream is asked whether it is one of ours.
                kept += support::count_process().handles - handles;
            }
        }
        if (number == 1) {
            // What is kept is there from now on: pools, connections and the platform's own.
            before = support::count_process();
            objects = com::module_lock::count();
        }
    }
    EXPECT_TRUE(support::eventually([&] {
        const auto now = support::count_process();
        return now.handles <= before.handles + kept && now.threads <= before.threads;
    })) << before.handles + kept
        << " handles, now " << support::count_process().handles;
    EXPECT_EQ(com::module_lock::count(), objects);
}

TEST_F(drops, take_what_another_process_offers) {
    const support::second_process other;
    ASSERT_EQ(other.ask("offer"), "offered");
    ComPtr<IDataObject> data;
    ASSERT_TRUE(SUCCEEDED(OleInitialize(nullptr)));
    ASSERT_EQ(OleGetClipboard(&data), S_OK);
    EXPECT_EQ(drop(*target().Get(), *data.Get()), std::pair(S_OK, DWORD{DROPEFFECT_COPY}));
    EXPECT_EQ(tree_of(*place), whole_tree);
    EXPECT_EQ(read(L"tree/inner/b.bin"), std::string(70'000, 'b'));
    data.Reset();
    OleUninitialize();
}

/// In the second process: puts a tree on the clipboard, and serves it on a thread of its own.
std::string offer(const std::string&) {
    static std::promise<void> offered;
    static std::jthread server([] {
        OleInitialize(nullptr);
        const auto data = com::make<virtual_files>();
        data->files = {virtual_folder(L"tree"),
                       {L"tree\\a.txt", "alpha"},
                       virtual_folder(L"tree\\inner"),
                       {L"tree\\inner\\b.bin", std::string(70'000, 'b')}};
        OleSetClipboard(data.Get());
        offered.set_value();
        MSG message;
        while (GetMessageW(&message, nullptr, 0, 0) > 0) {
            DispatchMessageW(&message);
        }
    });
    offered.get_future().wait();
    return "offered";
}

} // namespace

} // namespace transfer

int main(int argc, char** argv) {
    support::serve_if_second(argc, argv, &transfer::offer);
    testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
