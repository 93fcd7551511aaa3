/// The names of items: how other programs are shown them, how they are parsed and changed.
#include "driven_window.h"
#include "second_process.h"
#include "signed_in.h"

#include "shell/host_process.h"
#include "utils/filesystem.h"
#include "utils/module.h"
#include "vfs_quilldeck/session_objects.h"
#include "vfs_quilldeck/text_encoding.h"

#include <cstring>
#include <filesystem>
#include <fstream>
#include <sstream>
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
    save_as_list() { set(L""); }

    std::wstring text() const { return m_units; }

    void set(const std::wstring& text) {
        std::memset(m_units, 0, size);
        text.copy(m_units, size / sizeof(wchar_t));
    }

    static constexpr std::size_t size = vfs_quilldeck::save_as_view_size;

private:
    const utils::unique_handle m_mapping{
        OpenFileMappingW(FILE_MAP_WRITE, FALSE, vfs_quilldeck::save_as_mapping_name)};
    const utils::unique_view m_view{MapViewOfFile(m_mapping.get(), FILE_MAP_WRITE, 0, 0, size)};
    wchar_t* const m_units = static_cast<wchar_t*>(m_view.get());
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
    ASSERT_EQ(parse_all(*drive.Get(), L"DOCUMENTS\\Plan.pdf"), S_OK);
    EXPECT_EQ(eaten, 19u);
    EXPECT_EQ(attributes, 0x40400073u);
    const CItemIDList plan(result.get(), false);
    EXPECT_EQ(plan.path_string(), L"Documents\\Plan.pdf");

    const auto documents = open(*drive.Get(), L"documents");
    const auto item = parse(*documents.Get(), L"Plan.pdf");
    for (const std::wstring& name :
         {desktop_name(SHGDN_FORPARSING) + L"\\Documents\\Plan.pdf",
          desktop_name(SHGDN_FORPARSING | SHGDN_FORADDRESSBAR) + L"\\Documents\\Plan.pdf",
          name_of(*documents.Get(), item.get(), SHGDN_FORPARSING)}) {
        ASSERT_EQ(parse_all(*documents.Get(), name), S_OK) << fs::path(name);
        EXPECT_EQ(eaten, name.size() + 1);
        EXPECT_EQ(bytes_of(result.get()),
                  bytes_of(drive_list().get()) + bytes_of(plan.to_list().get()));
    }
    for (const auto* missing :
         {L"missing", L"Documents\\missing\\x", L"Documents\\Plan.pdf\\x", L"Documents\\", L""}) {
        EXPECT_EQ(parse_all(*drive.Get(), missing), E_FAIL);
        EXPECT_FALSE(result);
    }
    EXPECT_EQ(parse_all(*drive.Get(), L"missing", STGM_READ), E_FAIL);
}

TEST_F(names, may_be_those_of_files_that_a_dialog_will_make) {
    save_as_list shared;
    const auto documents = open(*drive.Get(), L"Documents");
    ASSERT_EQ(parse_all(*documents.Get(), L"new \u00e9 < 1.txt", STGM_CREATE), S_OK);
    EXPECT_EQ(attributes, 0u);
    EXPECT_EQ(eaten, 0u);
    PIDLDATA expected;
    expected.set_name(L"new \u00e9 < 1.txt");
    EXPECT_EQ(bytes_of(result.get()), bytes_of(CItemIDList(expected).to_list().get()));
    // Where it will lie, as the dialog is told.
    EXPECT_TRUE(name_of(*documents.Get(), result.get(), SHGDN_FORPARSING)
                    .ends_with(L"\\demo\\files_saved\\Documents\\new \u00e9 < 1.txt"));
    const std::wstring entry =
        L"<NewFile>" + utils::filesystem::get_special_directory(0) + L"\\Quilldeck\\Filter temp\\";
    const std::wstring first = entry + L"Documents\\new \u00e9 \\< 1.txt</NewFile>";
    EXPECT_EQ(shared.text(), L"<SaveAsFiles>" + first + L"</SaveAsFiles>");
    ASSERT_EQ(parse_all(*drive.Get(), L"Documents\\b.txt", STGM_CREATE), S_OK);
    EXPECT_EQ(eaten, 10u);
    const std::wstring both =
        L"<SaveAsFiles>" + first + entry + L"Documents\\b.txt</NewFile></SaveAsFiles>";
    EXPECT_EQ(shared.text(), both);

    // A folder that is missing on the way is not made up.
    EXPECT_EQ(parse_all(*drive.Get(), L"missing\\b.txt", STGM_CREATE), E_FAIL);
    EXPECT_EQ(shared.text(), both);
    // A list that is full or broken stays as it is, and the dialog goes on.
    const std::wstring full =
        L"<R><NewFile>" + std::wstring(save_as_list::size / 2 - 30, L'x') + L"</NewFile></R>";
    for (const std::wstring& text : {full, std::wstring(L"<broken")}) {
        shared.set(text);
        EXPECT_EQ(parse_all(*drive.Get(), L"c.txt", STGM_CREATE), S_OK);
        EXPECT_EQ(shared.text(), text);
    }
}

TEST_F(names, depend_on_the_host) {
    const auto documents = open(*drive.Get(), L"Documents");
    const std::wstring below = L"Awkward names\\Caf\u00e9 (composed).txt";
    const auto item = parse(*documents.Get(), below);
    const std::wstring saved =
        utils::filesystem::get_special_directory(0) + L"\\Quilldeck\\demo\\files_saved\\";
    fs::remove_all(saved);
    EXPECT_EQ(name_of(*documents.Get(), item.get(), SHGDN_FORADDRESSBAR), below);
    EXPECT_EQ(name_of(*documents.Get(), item.get(), SHGDN_INFOLDER | SHGDN_FORPARSING), below);
    EXPECT_EQ(name_of(*documents.Get(), item.get(), SHGDN_FORPARSING | SHGDN_FORADDRESSBAR),
              desktop_name(SHGDN_FORPARSING | SHGDN_FORADDRESSBAR) + L"\\Documents\\" + below);
    EXPECT_FALSE(fs::exists(saved + L"Documents"));
    EXPECT_EQ(name_of(*documents.Get(), item.get(), SHGDN_FORPARSING),
              saved + L"Documents\\" + below);
    EXPECT_TRUE(fs::is_directory(saved + L"Documents"));
    const auto none = CItemIDList().to_list();
    EXPECT_EQ(name_of(*make_drive().Get(), none.get(), SHGDN_FORPARSING), saved);

    // The same program under the names of others.
    const fs::path copies = fs::temp_directory_path() / L"hosts";
    fs::create_directories(copies);
    for (const auto& [program, kind] : {std::pair{L"Explorer.EXE", "1"},
                                        {L"WinWord.exe", "2"},
                                        {L"Quilldeck_Session64.exe", "3"},
                                        {L"others.exe", "0"}}) {
        fs::copy_file(utils::own_module_path(), copies / program);
        const support::second_process host((copies / program).native());
        EXPECT_EQ(host.ask("kind"), kind);
        EXPECT_EQ(utf8_to_wide(host.ask("name")),
                  *kind == '1' ? desktop_name(SHGDN_FORPARSING) + L"\\Documents\\Plan.pdf 400073"
                               : saved + L"Documents\\Plan.pdf 40400073");
    }
    fs::remove_all(copies);
}

/// Collects what the shell tells of changes: each event with the bytes of its two lists.
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

    using event = std::tuple<LPARAM, std::string, std::string>;
    inline static std::vector<event> events;

private:
    static LRESULT CALLBACK receive(HWND window, UINT message, WPARAM wparam, LPARAM lparam) {
        if (message != WM_APP) {
            return DefWindowProcW(window, message, wparam, lparam);
        }
        const auto* const lists = reinterpret_cast<ITEMIDLIST**>(wparam);
        events.emplace_back(lparam, bytes_of(lists[0]), bytes_of(lists[1]));
        return 0;
    }

    HWND m_window;
    ULONG m_id;
};

TEST_F(names, are_changed_in_the_store_and_told_to_the_shell) {
    const auto directory = std::dynamic_pointer_cast<vfs::directory>(
        directory_of(*drive.Get())->create_directory(L"renamed"));
    directory->create_file(L"old.txt");
    directory->create_directory(L"old");
    const auto folder = open(*drive.Get(), L"renamed");
    const std::string place =
        bytes_of(drive_list().get()) + bytes_of(parse(*drive.Get(), L"renamed").get());
    const change_log log;
    for (const auto& [name, event] :
         {std::pair{L"old.txt", SHCNE_RENAMEITEM}, {L"old", SHCNE_RENAMEFOLDER}}) {
        const auto item = parse(*folder.Get(), name);
        ITEMIDLIST* renamed = nullptr;
        ASSERT_EQ(folder->SetNameOf(nullptr, item.get(),
                                    (L"C:\\a\\new" + std::wstring(name)).c_str(), SHGDN_FORPARSING,
                                    &renamed),
                  S_OK);
        const com::unique_id_list owned(renamed);
        CItemIDList expected(item.get(), false);
        expected.last().set_name(L"new" + std::wstring(name));
        EXPECT_EQ(bytes_of(renamed), bytes_of(expected.to_list().get()));
        ASSERT_FALSE(log.events.empty());
        EXPECT_EQ(log.events.back(), change_log::event(event, place + bytes_of(item.get()),
                                                       place + bytes_of(renamed)));
    }
    const std::size_t told = log.events.size();
    std::jthread user(
        [] { support::answer_box(support::await_dialog(L"Name already exists"), IDOK); });
    EXPECT_EQ(folder->SetNameOf(nullptr, parse(*folder.Get(), L"newold").get(), L"newold.txt",
                                SHGDN_NORMAL, nullptr),
              E_FAIL);
    EXPECT_EQ(log.events.size(), told);
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
    auto* const whole = reinterpret_cast<ITEMIDLIST*>(list.data());
    ComPtr<IShellFolder> goal;
    com::check(make_drive()->BindToObject(ILNext(ILNext(whole)), nullptr, IID_PPV_ARGS(&goal)));
    return wide_to_utf8(item_of(*goal.Get())->get_name());
}

/// What a second process of these tests answers.
std::string serve(const std::string& line) {
    const com::apartment apartment;
    std::ostringstream answer;
    answer << std::hex;
    try {
        if (line == "kind") {
            answer << get_process_kind(GetCurrentProcessId());
        } else if (line == "name") {
            const auto documents = open(*make_drive().Get(), L"Documents");
            const auto plan = parse(*documents.Get(), L"Plan.pdf");
            answer << wide_to_utf8(name_of(*documents.Get(), plan.get(), SHGDN_FORPARSING)) << ' '
                   << attributes_of(*documents.Get(), {plan.get()});
        } else {
            answer << follow(utf8_to_wide(line.substr(line.find(' ') + 1)));
        }
    } catch (const com::status_exception& failure) {
        answer << failure.status();
    }
    return answer.str();
}

} // namespace

} // namespace shell

int main(int argc, char** argv) {
    support::serve_if_second(argc, argv, shell::serve);
    testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
