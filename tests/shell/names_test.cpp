/// The names of items: how other programs are shown them, how they are parsed and changed.
#include "driven_window.h"
#include "second_process.h"
#include "signed_in.h"

#include "shell/change_notice.h"
#include "shell/host_process.h"
#include "utils/filesystem.h"
#include "utils/module.h"
#include "vfs_quilldeck/session_objects.h"
#include "vfs_quilldeck/text_encoding.h"

#include <cstring>
#include <filesystem>
#include <fstream>
#include <thread>

namespace shell {

namespace {

namespace fs = std::filesystem;

using vfs_quilldeck::utf8_to_wide;
using vfs_quilldeck::wide_to_utf8;

std::wstring desktop_name(SHGDNF flags) {
    ComPtr<IShellFolder> desktop;
    com::check(SHGetDesktopFolder(&desktop));
    return name_of(*desktop.Get(), drive_list().get(), flags);
}

/// The list of save dialogs' files, as all processes share it.
class save_as_list {
public:
    save_as_list()
        : m_mapping(OpenFileMappingW(FILE_MAP_WRITE, FALSE, vfs_quilldeck::save_as_mapping_name)),
          m_view(MapViewOfFile(m_mapping.get(), FILE_MAP_WRITE, 0, 0, size)) {
        std::memset(m_view.get(), 0, size);
    }

    std::wstring text() const { return static_cast<const wchar_t*>(m_view.get()); }

    void set(const std::wstring& text) {
        std::memset(m_view.get(), 0, size);
        text.copy(static_cast<wchar_t*>(m_view.get()), size / 2);
    }

    static constexpr std::size_t size = vfs_quilldeck::save_as_view_size;

private:
    utils::unique_handle m_mapping;
    utils::unique_view m_view;
};

class names : public signed_in {
protected:
    /// Parses with all out-parameters; `mode` is that of a bind context, -1 for none.
    HRESULT parse_all(IShellFolder& folder, std::wstring name, long mode = -1) {
        ComPtr<IBindCtx> context;
        if (mode >= 0) {
            CreateBindCtx(0, &context);
            BIND_OPTS options{sizeof(BIND_OPTS), 0, static_cast<DWORD>(mode), 0};
            context->SetBindOptions(&options);
        }
        ITEMIDLIST* parsed = nullptr;
        attributes = ~0UL;
        const HRESULT status = folder.ParseDisplayName(nullptr, context.Get(), name.data(), &eaten,
                                                       &parsed, &attributes);
        result.reset(parsed);
        return status;
    }

    const ComPtr<IShellFolder2> drive = make_drive();
    ULONG eaten = 0;
    ULONG attributes = 0;
    com::unique_id_list result;
};

TEST_F(names, are_parsed_from_here_and_from_the_root) {
    const auto documents = open(*drive.Get(), L"documents");
    ASSERT_EQ(parse_all(*drive.Get(), L"DOCUMENTS\\Plan.pdf"), S_OK);
    EXPECT_EQ(eaten, 19u);
    EXPECT_EQ(attributes, 0x40400073u);
    const CItemIDList plan(result.get(), false);
    EXPECT_EQ(plan.path_string(), L"Documents\\Plan.pdf");
    const CItemIDList whole = CItemIDList(drive_list().get(), true) + plan;

    const auto item = parse(*documents.Get(), L"Plan.pdf");
    const std::wstring local = name_of(*documents.Get(), item.get(), SHGDN_FORPARSING);
    for (const std::wstring& name :
         {desktop_name(SHGDN_FORPARSING) + L"\\Documents\\Plan.pdf",
          desktop_name(SHGDN_FORPARSING | SHGDN_FORADDRESSBAR) + L"\\Documents\\Plan.pdf", local}) {
        ASSERT_EQ(parse_all(*documents.Get(), name), S_OK) << fs::path(name);
        EXPECT_EQ(eaten, name.size() + 1);
        EXPECT_TRUE(is_equal(result.get(), whole.to_list().get()));
    }
    for (const auto* missing :
         {L"missing", L"Documents\\missing\\x", L"Documents\\Plan.pdf\\x", L"Documents\\", L""}) {
        EXPECT_EQ(parse_all(*drive.Get(), missing), E_FAIL);
        EXPECT_FALSE(result);
    }
    EXPECT_EQ(parse_all(*drive.Get(), L"missing", STGM_READ), E_FAIL);
    EXPECT_EQ(drive->ParseDisplayName(nullptr, nullptr, nullptr, nullptr, nullptr, nullptr),
              E_POINTER);
    // A bare object that was never connected parses as well.
    EXPECT_EQ(parse_all(*make_drive().Get(), L"Documents"), S_OK);
}

TEST_F(names, may_be_those_of_files_that_a_dialog_will_make) {
    save_as_list shared;
    const auto documents = open(*drive.Get(), L"Documents");
    ASSERT_EQ(parse_all(*documents.Get(), L"new \u00e9 < 1.txt", STGM_CREATE), S_OK);
    EXPECT_EQ(attributes, 0u);
    EXPECT_EQ(eaten, 0u);
    PIDLDATA expected;
    expected.set_name(L"new \u00e9 < 1.txt");
    EXPECT_TRUE(is_equal(result.get(), CItemIDList(expected).to_list().get()));
    const std::wstring folder =
        utils::filesystem::get_special_directory(0) + L"\\Quilldeck\\Filter temp\\";
    const std::wstring first = L"<NewFile>" + folder + L"Documents\\new \u00e9 \\< 1.txt</NewFile>";
    EXPECT_EQ(shared.text(), L"<SaveAsFiles>" + first + L"</SaveAsFiles>");
    // Where it will lie, as the dialog is told.
    EXPECT_TRUE(name_of(*documents.Get(), result.get(), SHGDN_FORPARSING)
                    .ends_with(L"\\demo\\files_saved\\Documents\\new \u00e9 < 1.txt"));

    ASSERT_EQ(parse_all(*drive.Get(), L"Documents\\b.txt", STGM_CREATE), S_OK);
    EXPECT_EQ(eaten, 10u);
    const std::wstring both = L"<SaveAsFiles>" + first + L"<NewFile>" + folder +
                              L"Documents\\b.txt</NewFile></SaveAsFiles>";
    EXPECT_EQ(shared.text(), both);

    // A folder that is missing on the way is not made up.
    EXPECT_EQ(parse_all(*drive.Get(), L"missing\\b.txt", STGM_CREATE), E_FAIL);
    EXPECT_EQ(parse_all(*drive.Get(), L"missing\\", STGM_CREATE), E_FAIL);
    EXPECT_EQ(shared.text(), both);
    // A list that is full or broken stays as it is, and the dialog goes on.
    for (const std::wstring& text :
         {L"<SaveAsFiles><NewFile>" + std::wstring(save_as_list::size / 2 - 60, L'x') +
              L"</NewFile></SaveAsFiles>",
          std::wstring(L"<broken")}) {
        shared.set(text);
        EXPECT_EQ(parse_all(*drive.Get(), L"c.txt", STGM_CREATE), S_OK);
        EXPECT_EQ(shared.text(), text);
    }
}

TEST_F(names, depend_on_the_host) {
    const auto documents = open(*drive.Get(), L"Documents");
    const auto item = parse(*documents.Get(), L"Awkward names\\Caf\u00e9 (composed).txt");
    const std::wstring below = L"Awkward names\\Caf\u00e9 (composed).txt";
    for (const SHGDNF flags : {SHGDNF{SHGDN_NORMAL}, SHGDNF{SHGDN_INFOLDER | SHGDN_FORPARSING},
                               SHGDNF{SHGDN_FORADDRESSBAR}}) {
        EXPECT_EQ(name_of(*documents.Get(), item.get(), flags), below);
    }
    const std::wstring saved =
        utils::filesystem::get_special_directory(0) + L"\\Quilldeck\\demo\\files_saved\\";
    fs::remove_all(saved);
    EXPECT_EQ(name_of(*documents.Get(), item.get(), SHGDN_FORPARSING),
              saved + L"Documents\\" + below);
    EXPECT_TRUE(fs::is_directory(saved + L"Documents"));
    EXPECT_EQ(name_of(*documents.Get(), parse(*documents.Get(), L"Awkward names").get(),
                      SHGDN_FORPARSING),
              saved + L"Documents\\Awkward names");
    EXPECT_TRUE(fs::is_directory(saved + L"Documents\\Awkward names"));
    const auto none = CItemIDList().to_list();
    EXPECT_EQ(name_of(*make_drive().Get(), none.get(), SHGDN_FORPARSING), saved);
    EXPECT_EQ(name_of(*documents.Get(), item.get(), SHGDN_FORPARSING | SHGDN_FORADDRESSBAR),
              desktop_name(SHGDN_FORPARSING | SHGDN_FORADDRESSBAR) + L"\\Documents\\" + below);
    STRRET name{};
    EXPECT_EQ(drive->GetDisplayNameOf(nullptr, SHGDN_NORMAL, &name), E_INVALIDARG);
    EXPECT_EQ(drive->GetDisplayNameOf(none.get(), SHGDN_NORMAL, nullptr), E_POINTER);
    EXPECT_EQ(get_process_kind(GetCurrentProcessId()), process_other);
    EXPECT_EQ(get_process_kind(0), process_other);

    // The same program under the names of others.
    const fs::path copies = fs::temp_directory_path() / L"hosts";
    fs::create_directories(copies);
    for (const auto& [program, kind] : {std::pair{L"Explorer.EXE", "1"},
                                        {L"WinWord.exe", "2"},
                                        {L"quilldeck_session.exe", "3"},
                                        {L"Quilldeck_Session64.exe", "3"}}) {
        fs::copy_file(utils::own_module_path(), copies / program);
        const support::second_process host((copies / program).native());
        EXPECT_EQ(host.ask("kind"), kind);
        const bool manager = *kind == '1';
        EXPECT_EQ(host.ask("name"),
                  wide_to_utf8(manager ? desktop_name(SHGDN_FORPARSING) + L"\\Documents\\Plan.pdf"
                                       : saved + L"Documents\\Plan.pdf"));
        EXPECT_EQ(host.ask("attributes"), manager ? "400073" : "40400073");
    }
    fs::remove_all(copies);
}

/// Collects what the shell tells of changes.
class change_log {
public:
    change_log()
        : m_window(CreateWindowExW(0, L"Static", L"", 0, 0, 0, 0, 0, HWND_MESSAGE, nullptr, nullptr,
                                   nullptr)) {
        SetWindowLongPtrW(m_window, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(&receive));
        const SHChangeNotifyEntry everything{nullptr, TRUE};
        m_id = SHChangeNotifyRegister(m_window, SHCNRF_ShellLevel, SHCNE_ALLEVENTS, WM_APP, 1,
                                      &everything);
        events.clear();
    }

    change_log(const change_log&) = delete;
    change_log& operator=(const change_log&) = delete;

    ~change_log() {
        SHChangeNotifyDeregister(m_id);
        DestroyWindow(m_window);
    }

    struct event {
        LONG id;
        com::unique_id_list lists[2];
    };

    inline static std::vector<event> events;

private:
    static LRESULT CALLBACK receive(HWND window, UINT message, WPARAM wparam, LPARAM lparam) {
        if (message != WM_APP) {
            return DefWindowProcW(window, message, wparam, lparam);
        }
        const auto* const lists = reinterpret_cast<ITEMIDLIST**>(wparam);
        const auto copy = [](const ITEMIDLIST* list) {
            return com::unique_id_list(list ? ILClone(list) : nullptr);
        };
        events.push_back({static_cast<LONG>(lparam), {copy(lists[0]), copy(lists[1])}});
        return 0;
    }

    HWND m_window;
    ULONG m_id;
};

TEST_F(names, are_changed_in_the_store_and_told_to_the_shell) {
    directory_of(*drive.Get())->create_directory(L"renamed")->get_id();
    const auto folder = open(*drive.Get(), L"renamed");
    directory_of(*folder.Get())->create_file(L"old.txt");
    directory_of(*folder.Get())->create_directory(L"old");
    const CItemIDList place = CItemIDList(drive_list().get(), true) +
                              CItemIDList(parse(*drive.Get(), L"renamed").get(), false);
    const change_log log;
    for (const auto& [name, event] :
         {std::pair{L"old.txt", SHCNE_RENAMEITEM}, {L"old", SHCNE_RENAMEFOLDER}}) {
        const std::wstring new_name = std::wstring(L"new") + name;
        const auto item = parse(*folder.Get(), name);
        ITEMIDLIST* renamed = nullptr;
        ASSERT_EQ(folder->SetNameOf(nullptr, item.get(), (L"C:\\a\\b\\" + new_name).c_str(),
                                    SHGDN_FORPARSING, &renamed),
                  S_OK);
        const com::unique_id_list owned(renamed);
        EXPECT_EQ(record_of(renamed).get_id(), record_of(item.get()).get_id());
        EXPECT_EQ(record_of(renamed).get_name(), new_name);
        ASSERT_FALSE(log.events.empty());
        EXPECT_EQ(log.events.back().id, event);
        EXPECT_TRUE(is_equal(log.events.back().lists[0].get(),
                             (place + CItemIDList(item.get(), false)).to_list().get()));
        EXPECT_TRUE(is_equal(log.events.back().lists[1].get(),
                             (place + CItemIDList(renamed, false)).to_list().get()));
    }
    const std::size_t told = log.events.size();
    const auto item = parse(*folder.Get(), L"newold");
    std::jthread user(
        [&] { support::answer_box(support::await_dialog(L"Name already exists"), IDOK); });
    ITEMIDLIST* renamed = nullptr;
    EXPECT_EQ(folder->SetNameOf(nullptr, item.get(), L"newold.txt", SHGDN_NORMAL, &renamed),
              E_FAIL);
    EXPECT_EQ(renamed, nullptr);
    EXPECT_EQ(log.events.size(), told);
    EXPECT_EQ(folder->SetNameOf(nullptr, nullptr, L"x", SHGDN_NORMAL, &renamed), E_INVALIDARG);
    EXPECT_EQ(folder->SetNameOf(nullptr, item.get(), nullptr, SHGDN_NORMAL, &renamed),
              E_INVALIDARG);

    notify_change(SHCNE_UPDATEDIR, place);
    EXPECT_EQ(log.events.back().id, SHCNE_UPDATEDIR);
}

TEST_F(names, take_no_part_in_what_a_shortcut_leads_to) {
    const auto root = directory_of(*drive.Get());
    const auto outer = std::dynamic_pointer_cast<vfs::directory>(root->create_directory(L"outer"));
    const auto inner = std::dynamic_pointer_cast<vfs::directory>(outer->create_directory(L"inner"));
    inner->create_file(L"goal.txt");
    const CItemIDList way =
        CItemIDList(drive_list().get(), true) +
        CItemIDList(parse(*drive.Get(), L"outer\\inner\\goal.txt").get(), false);
    const fs::path path = fs::temp_directory_path() / L"goal.lnk";
    ComPtr<IShellLinkW> link;
    com::check(
        CoCreateInstance(CLSID_ShellLink, nullptr, CLSCTX_INPROC_SERVER, IID_PPV_ARGS(&link)));
    ComPtr<IPersistFile> file;
    com::check(link.As(&file));
    ASSERT_EQ(link->SetIDList(way.to_list().get()), S_OK);
    ASSERT_EQ(file->Save(path.c_str(), TRUE), S_OK);

    inner->rename_item(L"goal.txt", L"renamed goal.txt");
    outer->rename_item(L"inner", L"renamed inner");
    root->rename_item(L"outer", L"renamed outer");
    const auto follow_elsewhere = [&] {
        return support::second_process().ask("follow " + path.string());
    };
    EXPECT_EQ(follow_elsewhere(), "renamed goal.txt");
    inner->delete_item(L"renamed goal.txt", false);
    EXPECT_EQ(follow_elsewhere(), "80004005");
}

/// Goes where a shortcut leads to, and tells the name of what is there. The file is read by its
/// format, since Wine's links refuse to load what they have saved of other namespaces.
std::string follow(const std::wstring& path) {
    constexpr std::streamoff header = 76;
    std::ifstream file(fs::path(path), std::ios::binary);
    std::uint16_t size = 0;
    file.seekg(header).read(reinterpret_cast<char*>(&size), sizeof(size));
    std::string list(size, '\0');
    file.read(list.data(), size);
    const auto drive = make_drive();
    auto* const whole = reinterpret_cast<ITEMIDLIST*>(list.data());
    ComPtr<IShellFolderImpl> goal;
    com::check(drive->BindToObject(ILNext(ILNext(whole)), nullptr, IID_PPV_ARGS(&goal)));
    VARIANT item{};
    com::check(goal->GetObject(nullptr, &item));
    return wide_to_utf8((*static_cast<vfs::item_ptr*>(item.byref))->get_name());
}

} // namespace

/// What a second process of these tests answers.
std::string serve(const std::string& line) try {
    const com::apartment apartment;
    if (line == "kind") {
        return std::to_string(get_process_kind(GetCurrentProcessId()));
    }
    if (line.starts_with("follow ")) {
        return follow(utf8_to_wide(line.substr(7)));
    }
    const auto documents = open(*make_drive().Get(), L"Documents");
    const auto plan = parse(*documents.Get(), L"Plan.pdf");
    if (line == "name") {
        return wide_to_utf8(name_of(*documents.Get(), plan.get(), SHGDN_FORPARSING));
    }
    const ITEMIDLIST* items[] = {plan.get()};
    SFGAOF flags = ~SFGAOF{0};
    documents->GetAttributesOf(1, items, &flags);
    char text[16];
    std::snprintf(text, sizeof(text), "%lx", flags);
    return text;
} catch (const com::status_exception& failure) {

    char text[16];
    std::snprintf(text, sizeof(text), "%lx", static_cast<unsigned long>(failure.status()));
    return text;
}

} // namespace shell

int main(int argc, char** argv) {
    support::serve_if_second(argc, argv, shell::serve);
    testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
