/// The names of items: how other programs are shown them, how they are parsed and changed.
#include "driven_window.h"
#include "second_process.h"
#include "signed_in.h"

#include "shell_items/host_process.h"
#include "utils/filesystem.h"
#include "utils/module.h"
#include "vfs_quilldeck/session/session_objects.h"
#include "vfs_quilldeck/wire/text_encoding.h"

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
    std::wstring text() const { return m_units; }

    void set(std::wstring text) {
        text.resize(size / sizeof(wchar_t));
        text.copy(m_units, text.size());
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
    /// Parses with all out-parameters; `mode` is that of the bind context.
    HRESULT parse_all(IShellFolder& folder, std::wstring name, DWORD mode = STGM_READ) {
        ComPtr<IBindCtx> context;
        CreateBindCtx(0, &context);
        BIND_OPTS options{sizeof(BIND_OPTS), 0, mode, 0};
        context->SetBindOptions(&options);
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
}

TEST_F(names, may_be_those_of_files_that_a_dialog_will_make) {
    save_as_list shared;
    shared.set(L"");
    const auto documents = open(*drive.Get(), L"Documents");
    ASSERT_EQ(parse_all(*documents.Get(), L"new \u00e9 1.txt", STGM_CREATE), S_OK);
    EXPECT_EQ(attributes, 0u);
    EXPECT_EQ(eaten, 0u);
    PIDLDATA expected;
    expected.set_name(L"new \u00e9 1.txt");
    EXPECT_EQ(bytes_of(result.get()), bytes_of(CItemIDList(expected).to_list().get()));
    const std::wstring entry =
        L"<NewFile>" + utils::filesystem::get_special_directory(0) + L"\\Quilldeck\\Filter temp\\";
    const std::wstring first = entry + L"Documents\\new \u00e9 1.txt</NewFile>";
    EXPECT_EQ(shared.text(), L"<SaveAsFiles>" + first + L"</SaveAsFiles>");
    ASSERT_EQ(parse_all(*drive.Get(), L"Documents\\b.txt", STGM_CREATE), S_OK);
    EXPECT_EQ(eaten, 10u);
    const std::wstring both =
        L"<SaveAsFiles>" + first + entry + L"Documents\\b.txt</NewFile></SaveAsFiles>";
    EXPECT_EQ(shared.text(), both);

    for (const auto* refused : {L"missing\\b.txt", L"", L"Documents\\", L"..", L"Documents\\a/b",
                                L"Documents\\b.txt:stream", L"nul.txt"}) {
        EXPECT_EQ(parse_all(*drive.Get(), refused, STGM_CREATE), E_FAIL) << fs::path(refused);
    }
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
    for (const int flags : {int{SHGDN_FORADDRESSBAR}, SHGDN_INFOLDER | SHGDN_FORPARSING}) {
        EXPECT_EQ(name_of(*documents.Get(), item.get(), static_cast<SHGDNF>(flags)), below);
    }
    parse(*drive.Get(), saved + L"Documents\\Plan.pdf");
    EXPECT_FALSE(fs::exists(saved)) << "only for those who are told a path in it";
    EXPECT_EQ(name_of(*drive.Get(), CItemIDList().to_list().get(), SHGDN_FORPARSING), saved);
    EXPECT_FALSE(fs::exists(saved + L"Documents"));
    EXPECT_EQ(name_of(*documents.Get(), item.get(), SHGDN_FORPARSING | SHGDN_FORADDRESSBAR),
              desktop_name(SHGDN_FORPARSING | SHGDN_FORADDRESSBAR) + L"\\Documents\\" + below);
    EXPECT_EQ(name_of(*documents.Get(), item.get(), SHGDN_FORPARSING),
              saved + L"Documents\\" + below);
    EXPECT_TRUE(fs::is_directory(saved + L"Documents"));

    // What the store tells stays in that folder.
    for (const auto* name : {L"..", L".. ", L"..\\x", L"a/b", L"C:", L"a:b", L"con.txt", L"*"}) {
        PIDLDATA record;
        record.type = vfs::type_directory;
        record.set_name(name);
        const auto way = (CItemIDList(record) + CItemIDList(item.get(), false)).to_list();
        STRRET told{};
        EXPECT_EQ(drive->GetDisplayNameOf(way.get(), SHGDN_FORPARSING, &told), E_FAIL)
            << fs::path(name);
        EXPECT_EQ(name_of(*drive.Get(), way.get(), SHGDN_INFOLDER), name + (L"\\" + below));
    }
    EXPECT_FALSE(fs::exists(saved + L"a"));

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

using event = std::tuple<LPARAM, std::string, std::string>;

/// What the shell tells of changes meanwhile: each event with the bytes of its two lists.
template <class Change>
std::vector<event> events_of(Change change) {
    static std::vector<event> events;
    events.clear();
    const WNDPROC receive = [](HWND window, UINT message, WPARAM wparam, LPARAM lparam) {
        if (message != WM_APP) {
            return DefWindowProcW(window, message, wparam, lparam);
        }
        const auto* const lists = reinterpret_cast<ITEMIDLIST**>(wparam);
        events.emplace_back(lparam, bytes_of(lists[0]), bytes_of(lists[1]));
        return LRESULT{0};
    };
    const HWND window =
        CreateWindowExW(0, L"Static", L"", 0, 0, 0, 0, 0, HWND_MESSAGE, nullptr, nullptr, nullptr);
    SetWindowLongPtrW(window, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(receive));
    const SHChangeNotifyEntry everything{nullptr, TRUE};
    const ULONG id =
        SHChangeNotifyRegister(window, SHCNRF_ShellLevel, SHCNE_ALLEVENTS, WM_APP, 1, &everything);
    events.clear();
    change();
    SHChangeNotifyDeregister(id);
    DestroyWindow(window);
    return events;
}

TEST_F(names, are_changed_in_the_store_and_told_to_the_shell) {
    const auto directory = std::dynamic_pointer_cast<vfs::directory>(
        directory_of(*drive.Get())->create_directory(L"renamed"));
    directory->create_file(L"old.txt");
    directory->create_directory(L"old");
    const auto folder = open(*drive.Get(), L"renamed");
    const std::string place =
        bytes_of(drive_list().get()) + bytes_of(parse(*drive.Get(), L"renamed").get());
    for (const auto& [name, told] :
         {std::pair{L"old.txt", SHCNE_RENAMEITEM}, {L"old", SHCNE_RENAMEFOLDER}}) {
        const auto item = parse(*folder.Get(), name);
        ITEMIDLIST* renamed = nullptr;
        const std::wstring path = std::wstring(L"C:\\a\\new") + name;
        const auto events = events_of([&] {
            EXPECT_EQ(
                folder->SetNameOf(nullptr, item.get(), path.c_str(), SHGDN_FORPARSING, &renamed),
                S_OK);
        });
        const com::unique_id_list owned(renamed);
        CItemIDList expected(item.get(), false);
        expected.last().set_name(path.substr(5));
        EXPECT_EQ(bytes_of(renamed), bytes_of(expected.to_list().get()));
        ASSERT_FALSE(events.empty());
        EXPECT_EQ(events.back(),
                  event(told, place + bytes_of(item.get()), place + bytes_of(renamed)));
    }
    std::jthread user(
        [] { support::answer_box(support::await_dialog(L"Name already exists"), IDOK); });
    const auto events = events_of([&] {
        EXPECT_EQ(folder->SetNameOf(nullptr, parse(*folder.Get(), L"newold").get(), L"newold.txt",
                                    SHGDN_NORMAL, nullptr),
                  E_FAIL);
    });
    EXPECT_TRUE(events.empty());
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
