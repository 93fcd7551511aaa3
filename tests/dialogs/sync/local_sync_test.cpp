#include "sync_fixture.h"

#include "com/class_ids.h"
#include "com/memory.h"
#include "resources/sync_ids.h"

#include <gtest/gtest.h>
#include <shlobj.h>
#include <wrl/client.h>

#include <fstream>
#include <future>
#include <thread>

namespace dialogs {

namespace {

namespace fs = std::filesystem;
using Microsoft::WRL::ComPtr;
using support::eventually;
using syncer::binding;

constexpr int apply_now = 0x3021;
constexpr auto manager_title = L"Quilldeck synchronization manager";

/// The platform's data object of local items of one folder.
ComPtr<IDataObject> select(const fs::path& folder, const std::vector<std::wstring>& names) {
    ComPtr<IShellFolder> desktop;
    com::check(SHGetDesktopFolder(&desktop));
    const com::unique_id_list list = support::parse(*desktop.Get(), folder.native());
    ComPtr<IShellFolder> parent;
    com::check(desktop->BindToObject(list.get(), nullptr, IID_PPV_ARGS(&parent)));
    std::vector<com::unique_id_list> children;
    std::vector<const ITEMIDLIST*> selected;
    for (const std::wstring& name : names) {
        children.push_back(support::parse(*parent.Get(), name));
        selected.push_back(children.back().get());
    }
    ComPtr<IDataObject> items;
    com::check(parent->GetUIObjectOf(nullptr, static_cast<UINT>(selected.size()), selected.data(),
                                     IID_IDataObject, nullptr,
                                     reinterpret_cast<void**>(items.GetAddressOf())));
    return items;
}

ComPtr<IContextMenu> make_menu(IDataObject* items) {
    ComPtr<IShellExtInit> menu;
    com::check(CoCreateInstance(com::CLSID_ShellContextMenu, nullptr, CLSCTX_INPROC_SERVER,
                                IID_PPV_ARGS(&menu)));
    com::check(menu->Initialize(nullptr, items, nullptr));
    ComPtr<IContextMenu> asked;
    com::check(menu.As(&asked));
    return asked;
}

HRESULT invoke(IContextMenu& menu, const char* verb) {
    CMINVOKECOMMANDINFO info{};
    info.cbSize = sizeof(info);
    info.lpVerb = verb;
    info.nShow = SW_SHOWNORMAL;
    return menu.InvokeCommand(&info);
}

/// The properties that a command of the local menu shows, on a thread of their own.
class shown_sheet {
public:
    shown_sheet(const fs::path& folder, const std::vector<std::wstring>& names, int command)
        : thread_([=, this] {
              const com::apartment apartment;
              const auto items = select(folder, names);
              status_ = invoke(*make_menu(items.Get()).Get(), MAKEINTRESOURCEA(command));
          }) {
        page = await_page(IDC_LOCAL_SYNC_OTHER_END);
        sheet = GetParent(page);
        // The second of its two steps: what it shows of the item comes with its bindings.
        eventually([&] { return !support::text_of(GetDlgItem(page, IDC_SYNC_ITEM)).empty(); });
    }

    ~shown_sheet() { close(); }

    /// What the menu answered.
    HRESULT close() {
        if (thread_.joinable()) {
            PostMessageW(sheet, WM_COMMAND, IDCANCEL, 0);
            thread_.join();
        }
        return status_;
    }

    bool can_apply() const { return IsWindowEnabled(GetDlgItem(sheet, apply_now)) != FALSE; }

    void click(int id) const { SendMessageW(GetDlgItem(page, id), BM_CLICK, 0, 0); }

    /// Presses Apply and waits until the page has stored what there was.
    bool apply() const {
        support::press(sheet, apply_now);
        return eventually([&] { return !can_apply(); });
    }

    std::wstring other_end() const {
        return support::text_of(GetDlgItem(page, IDC_LOCAL_SYNC_OTHER_END));
    }

    HWND sheet = nullptr;
    HWND page = nullptr;

private:
    HRESULT status_ = E_UNEXPECTED;
    std::thread thread_;
};

class local_sync : public sync_test {
protected:
    local_sync() {
        fs::create_directories(folder / L"Docs");
        std::ofstream(folder / L"letter.txt") << "text";
    }

    ~local_sync() override { fs::remove_all(folder); }

    /// What stands in the file of a folder binding and of one of a file.
    std::string docs(const char* remote, bool backup, int number) const {
        return entry(remote, (folder / L"Docs").native(), "", backup, number);
    }

    support::registered_extension registration;
    fs::path folder = fs::temp_directory_path() / L"sync \u00e9 page";
};

TEST_F(local_sync, menu_has_two_entries_and_refuses_other_commands) {
    const auto menu = make_menu(select(folder, {L"Docs"}).Get());
    const auto entries = [&](UINT flags, UINT last, HRESULT expected) {
        const HMENU popup = CreatePopupMenu();
        AppendMenuW(popup, MF_STRING, 1, L"above");
        AppendMenuW(popup, MF_STRING, 2, L"below");
        EXPECT_EQ(menu->QueryContextMenu(popup, 1, 10, last, flags), expected);
        std::wstring all;
        for (int i = 0; i < GetMenuItemCount(popup); ++i) {
            wchar_t text[80] = L"";
            GetMenuStringW(popup, static_cast<UINT>(i), text, 80, MF_BYPOSITION);
            MENUITEMINFOW item{};
            item.cbSize = sizeof(item);
            item.fMask = MIIM_CHECKMARKS;
            GetMenuItemInfoW(popup, static_cast<UINT>(i), TRUE, &item);
            all += std::to_wstring(GetMenuItemID(popup, i)) + L":" + text +
                   (item.hbmpUnchecked ? L"* " : L" ");
        }
        DestroyMenu(popup);
        return all;
    };
    EXPECT_EQ(entries(CMF_NORMAL, 100, 2),
              L"1:above 11:Backup to Quilldeck* 10:Synchronize with Quilldeck* 2:below ");
    EXPECT_EQ(entries(CMF_DEFAULTONLY, 100, 0), L"1:above 2:below ");
    EXPECT_EQ(entries(CMF_NORMAL, 10, 0), L"1:above 2:below ") << "no room for two";
    char text[8];
    EXPECT_EQ(menu->GetCommandString(0, GCS_VERBA, nullptr, text, 8), E_INVALIDARG);
    EXPECT_EQ(invoke(*menu.Get(), "open"), E_INVALIDARG);
    EXPECT_EQ(invoke(*menu.Get(), MAKEINTRESOURCEA(2)), E_INVALIDARG);
    EXPECT_TRUE(FAILED(invoke(*make_menu(nullptr).Get(), MAKEINTRESOURCEA(0))));
    EXPECT_EQ(menu->InvokeCommand(nullptr), E_POINTER);
}

TEST_F(local_sync, binds_and_unbinds_a_folder_beside_another_process) {
    shown_sheet shown(folder, {L"Docs"}, 1);
    const std::pair<int, std::wstring> texts[] = {
        {IDC_SYNC_ITEM, (folder / L"Docs").native()},
        {469, L"Browse..."},
        {508, L"Permanently sync/backup files or folders"},
        {509, L"Full Sync"},
        {510, L"Backup"},
        {477, L"Manage Syncing Tasks"},
        {513, L"Important: You are about to backup multiple files through your internet "
              L"connection. The time of the upload can vary based on the speed of your internet "
              L"connection, number of files and the amount of data you are transferring."},
        {514, L"Important: You are about to upload or download multiple files through your "
              L"internet connection. The time of the upload can vary based on the speed of your "
              L"internet connection, number of files and the amount of data you are "
              L"transferring."},
        {515, L"Quilldeck will not backup hidden files or folders."},
    };
    for (const auto& [id, text] : texts) {
        EXPECT_EQ(support::text_of(GetDlgItem(shown.page, id)), text) << id;
    }
    for (const int unused : {474, 475, 476}) {
        EXPECT_TRUE(GetDlgItem(shown.page, unused));
        EXPECT_FALSE(IsWindowVisible(GetDlgItem(shown.page, unused)));
    }
    const auto state = [&] {
        std::string text;
        for (const int id : {508, 509, 510}) {
            text += IsDlgButtonChecked(shown.page, id) ? 'x' : '-';
            text += IsWindowEnabled(GetDlgItem(shown.page, id)) ? "" : "(off)";
        }
        for (const int id : {513, 514, 515}) {
            text += IsWindowVisible(GetDlgItem(shown.page, id)) ? 'v' : '.';
        }
        return text;
    };
    // As the entry asks; and it can be applied at once.
    EXPECT_EQ(state(), "x-xv.v");
    EXPECT_TRUE(shown.can_apply());
    ASSERT_TRUE(eventually([&] { return shown.other_end() == default_end(L"Docs"); }))
        << "the first folder of the store";
    EXPECT_EQ(bytes(), "") << "nothing is stored yet";
    ASSERT_TRUE(shown.apply());
    const std::string home = "Quilldeck/" + narrow(home_name());
    const std::string bound = home + "/Docs";
    EXPECT_EQ(bytes(), whole({docs(bound.c_str(), true, 0)}, 1));

    // Another process adds a binding of its own: it stays.
    const std::string their = entry("Quilldeck/a", L"C:\\a", "", true, 1);
    EXPECT_EQ(ask("add"), "done");
    shown.click(509);
    EXPECT_EQ(state(), "xx-.v.");
    ASSERT_TRUE(shown.apply());
    EXPECT_EQ(bytes(), whole({docs(bound.c_str(), false, 2), their}, 3));

    // It moves this one: what is not touched here stays where it was moved to, and shows.
    EXPECT_EQ(ask("move"), "done");
    shown.click(510);
    ASSERT_TRUE(shown.apply());
    EXPECT_EQ(bytes(), whole({docs("Quilldeck/Moved/Docs", true, 4), their}, 5));
    EXPECT_EQ(shown.other_end(), L"Quilldeck\\Moved\\Docs");

    // It ends it: that is told before it is bound again, and Apply can be pressed again.
    EXPECT_EQ(ask("end"), "done");
    shown.click(509);
    support::press(shown.sheet, apply_now);
    const HWND box = support::await_dialog(L"Error saving bindings");
    ASSERT_TRUE(box);
    EXPECT_NE(support::message_of(box).find(L"was changed elsewhere"), std::wstring::npos);
    EXPECT_TRUE(support::answer_box(box, IDOK));
    EXPECT_EQ(bytes(), whole({their}, 5));
    EXPECT_TRUE(shown.can_apply());
    EXPECT_EQ(state(), "-x(off)-(off)...") << "as the file has it";

    // A save that fails loses nothing and is told.
    shown.click(508);
    {
        const utils::unique_file held(CreateFileW(user_file().c_str(), GENERIC_READ,
                                                  FILE_SHARE_READ, nullptr, OPEN_EXISTING, 0,
                                                  nullptr));
        ASSERT_TRUE(held);
        support::press(shown.sheet, apply_now);
        const HWND failed = support::await_dialog(L"Error saving bindings");
        ASSERT_TRUE(failed);
        EXPECT_FALSE(support::message_of(failed).empty());
        EXPECT_TRUE(support::icon_of(failed));
        EXPECT_TRUE(support::answer_box(failed, IDOK));
        EXPECT_EQ(bytes(), whole({their}, 5));
        EXPECT_TRUE(shown.can_apply());
    }
    ASSERT_TRUE(shown.apply());
    EXPECT_EQ(bytes(), whole({docs(bound.c_str(), false, 5), their}, 6));

    // Unticked, the binding goes; the other one stays.
    shown.click(508);
    ASSERT_TRUE(shown.apply());
    EXPECT_EQ(bytes(), whole({their}, 6));
    EXPECT_EQ(shown.close(), S_OK);
}

TEST_F(local_sync, binds_files_and_several_items_and_refuses_other_places) {
    {
        shown_sheet shown(folder, {L"letter.txt"}, 0);
        EXPECT_TRUE(shown.can_apply());
        ASSERT_TRUE(eventually([&] { return shown.other_end() == default_end(L"letter.txt"); }));
        for (const wchar_t* wrong : {L"", L"letter.txt", L"C:\\letter.txt", L"Quilldecks\\x\\y"}) {
            support::type(shown.page, IDC_LOCAL_SYNC_OTHER_END, wrong);
            support::press(shown.sheet, apply_now);
            const HWND box = support::await_dialog(L"Wrong path selected");
            ASSERT_TRUE(box);
            EXPECT_EQ(support::message_of(box),
                      L"Quilldeck cannot synchronize files with selected location. Please try "
                      L"again.");
            EXPECT_TRUE(support::answer_box(box, IDOK));
            EXPECT_TRUE(shown.can_apply());
            EXPECT_EQ(bytes(), "");
        }
        support::type(shown.page, IDC_LOCAL_SYNC_OTHER_END, L"Quilldeck\\Letters\\letter.txt");
        ASSERT_TRUE(shown.apply());
    }
    const std::string letter = entry("Quilldeck/Letters", folder.native(), "letter.txt", false, 0);
    EXPECT_EQ(bytes(), whole({letter}, 1));
    {
        // Of several the box is clear, whatever they have; what is not touched stays.
        ASSERT_EQ(ask("neutral"), "done");
        shown_sheet shown(folder, {L"Docs", L"letter.txt"}, 0);
        EXPECT_EQ(support::text_of(GetDlgItem(shown.page, IDC_SYNC_ITEM)), L"Multiple Items");
        ASSERT_TRUE(eventually([&] { return !shown.other_end().empty(); }));
        support::type(shown.page, IDC_LOCAL_SYNC_OTHER_END, L"Quilldeck\\Both");
        shown.click(IDC_LOCAL_SYNC_BACKUP);
        ASSERT_TRUE(shown.apply());
    }
    EXPECT_EQ(bytes(), whole({entry("Quilldeck/Both", folder.native(), "letter.txt", true, 2),
                              docs("Quilldeck/Both/Docs", true, 1)},
                             3));
}

TEST_F(local_sync, closes_beside_a_silent_store_and_tells_of_a_failing_one) {
    constexpr int silence = 8;
    control.fault({{"kind", "delay"}, {"seconds", std::to_string(silence)}});
    const ULONGLONG begin = GetTickCount64();
    {
        shown_sheet shown(folder, {L"Docs"}, 1);
        EXPECT_EQ(shown.other_end(), L"");
        EXPECT_TRUE(shown.can_apply());
        EXPECT_EQ(shown.close(), S_OK);
    }
    EXPECT_LT(GetTickCount64() - begin, silence * 1000U);
    control.reset();

    // More than once: the request that nobody waits for any more comes here too.
    control.fault(
        {{"kind", "error"}, {"action", "list_dir"}, {"count", "9"}, {"description", "Not today."}});
    shown_sheet shown(folder, {L"Docs"}, 1);
    const HWND box = support::await_dialog(L"Error saving bindings");
    ASSERT_TRUE(box);
    EXPECT_EQ(support::message_of(box), L"Not today.");
    EXPECT_TRUE(support::answer_box(box, IDOK));
    EXPECT_EQ(shown.other_end(), L"");
    EXPECT_TRUE(IsWindowEnabled(shown.page));
    EXPECT_EQ(shown.close(), S_OK);

    // Bindings that cannot be read disable the page.
    std::ofstream(user_file()) << "<sync_bindings><binding>";
    std::thread host([&] {
        const com::apartment own;
        EXPECT_EQ(invoke(*make_menu(select(folder, {L"Docs"}).Get()).Get(), MAKEINTRESOURCEA(0)),
                  S_OK);
    });
    const HWND broken = support::await_dialog(L"Error saving bindings");
    EXPECT_TRUE(support::answer_box(broken, IDOK));
    const HWND page = await_page(IDC_LOCAL_SYNC_OTHER_END);
    EXPECT_TRUE(eventually([&] { return !IsWindowEnabled(page); }));
    PostMessageW(GetParent(page), WM_COMMAND, IDCANCEL, 0);
    host.join();
}

/// The command of that title in the toolbar of the drive.
ComPtr<IExplorerCommand> find_command(const std::wstring& title) {
    ITEMIDLIST* list = nullptr;
    com::check(SHParseDisplayName(L"::{20D04FE0-3AEA-1069-A2D8-08002B30309D}\\"
                                  L"::{5FA947B5-650A-4374-8A9A-5EFA4F126834}",
                                  nullptr, &list, 0, nullptr));
    const com::unique_id_list drive(list);
    ComPtr<IShellFolder> desktop;
    com::check(SHGetDesktopFolder(&desktop));
    ComPtr<IShellFolder> folder;
    com::check(desktop->BindToObject(drive.get(), nullptr, IID_PPV_ARGS(&folder)));
    ComPtr<IExplorerCommandProvider> provider;
    com::check(folder->CreateViewObject(nullptr, IID_PPV_ARGS(&provider)));
    ComPtr<IEnumExplorerCommand> commands;
    com::check(provider->GetCommands(nullptr, IID_PPV_ARGS(&commands)));
    ComPtr<IExplorerCommand> command;
    while (commands->Next(1, &command, nullptr) == S_OK) {
        wchar_t* text = nullptr;
        if (SUCCEEDED(command->GetTitle(nullptr, &text)) &&
            com::task_ptr<wchar_t>(text).get() == title) {
            return command;
        }
        command.Reset();
    }
    return nullptr;
}

TEST_F(local_sync, toolbar_backs_the_profile_up_and_shows_the_manager) {
    HRESULT status = E_UNEXPECTED;
    const auto start = [&status](const wchar_t* title) {
        return std::thread([&status, title] {
            const com::apartment own;
            status = find_command(title)->Invoke(nullptr, nullptr);
        });
    };
    std::thread backup = start(L"Backup PC");
    const HWND page = await_page(IDC_LOCAL_SYNC_OTHER_END);
    wchar_t profile[MAX_PATH] = L"";
    SHGetFolderPathW(nullptr, CSIDL_PROFILE, nullptr, SHGFP_TYPE_CURRENT, profile);
    EXPECT_TRUE(
        eventually([&] { return support::text_of(GetDlgItem(page, IDC_SYNC_ITEM)) == profile; }));
    EXPECT_TRUE(IsDlgButtonChecked(page, IDC_LOCAL_SYNC_PERMANENT));
    EXPECT_TRUE(IsDlgButtonChecked(page, IDC_LOCAL_SYNC_BACKUP));
    PostMessageW(GetParent(page), WM_COMMAND, IDCANCEL, 0);
    backup.join();
    EXPECT_EQ(status, S_OK);

    std::thread sync = start(L"Sync files");
    const HWND manager = support::await_dialog(manager_title);
    EXPECT_TRUE(manager);
    PostMessageW(manager, WM_COMMAND, IDCANCEL, 0);
    sync.join();
    EXPECT_EQ(status, S_OK);
}

TEST_F(local_sync, manager_lists_forces_and_ends_bindings) {
    ASSERT_EQ(ask("add"), "done");
    ASSERT_EQ(ask("add file"), "done");
    ASSERT_EQ(ask("add copy"), "done");
    shown_sheet shown(folder, {L"Docs"}, 0);
    support::press(shown.page, IDC_LOCAL_SYNC_MANAGE);
    const HWND manager = support::await_dialog(manager_title);
    ASSERT_TRUE(manager);
    const HWND list = GetDlgItem(manager, 480);
    const auto button = [&](int id) {
        return support::text_of(GetDlgItem(manager, id)) +
               (IsWindowEnabled(GetDlgItem(manager, id)) ? L"" : L" (off)");
    };
    const auto rows = [&] {
        std::wstring all;
        const auto count = static_cast<int>(SendMessageW(list, LVM_GETITEMCOUNT, 0, 0));
        for (int row = 0; row < count; ++row) {
            for (int cell = 0; cell < 3; ++cell) {
                wchar_t text[200] = L"";
                LVITEMW item{};
                item.iSubItem = cell;
                item.pszText = text;
                item.cchTextMax = 200;
                SendMessageW(list, LVM_GETITEMTEXTW, static_cast<WPARAM>(row),
                             reinterpret_cast<LPARAM>(&item));
                all += std::wstring(text) + (cell < 2 ? L"|" : L"\n");
            }
        }
        return all;
    };
    const auto choose = [&](int row) {
        LVITEMW item{};
        item.stateMask = item.state = LVIS_SELECTED | LVIS_FOCUSED;
        SendMessageW(list, LVM_SETITEMSTATE, static_cast<WPARAM>(row),
                     reinterpret_cast<LPARAM>(&item));
    };
    EXPECT_EQ(rows(), L"<dir>|C:\\a|Quilldeck/a\nb.txt|C:\\b|Quilldeck/b\n");
    EXPECT_EQ(button(481), L"Cancel permanent sync (off)");
    EXPECT_EQ(button(482), L"One time sync (off)");
    EXPECT_EQ(button(IDCANCEL), L"Close");
    const std::wstring titles[] = {L"File Name", L"File Location", L"QD Location"};
    for (int cell = 0; cell < 3; ++cell) {
        wchar_t text[80] = L"";
        LVCOLUMNW column{};
        column.mask = LVCF_TEXT;
        column.pszText = text;
        column.cchTextMax = 80;
        SendMessageW(list, LVM_GETCOLUMNW, static_cast<WPARAM>(cell),
                     reinterpret_cast<LPARAM>(&column));
        EXPECT_EQ(text, titles[cell]);
    }
    choose(1);
    EXPECT_EQ(button(481), L"Cancel permanent sync");
    SendMessageW(GetDlgItem(manager, 482), BM_CLICK, 0, 0);
    const std::string forced = entry("Quilldeck/b", L"C:\\b", "b.txt", true, 1, true);
    EXPECT_NE(bytes().find(forced), std::string::npos) << bytes();
    choose(0);
    SendMessageW(GetDlgItem(manager, 481), BM_CLICK, 0, 0);
    EXPECT_EQ(rows(), L"b.txt|C:\\b|Quilldeck/b\n");
    EXPECT_EQ(bytes().find("sync_rules_0.xml"), std::string::npos) << bytes();
    EXPECT_EQ(button(482), L"One time sync (off)");
    // Another process was faster: the row stays.
    choose(0);
    ASSERT_EQ(ask("end file"), "done");
    support::press(manager, 481);
    const HWND box = support::await_dialog(L"Quilldeck syncer error");
    ASSERT_TRUE(box);
    EXPECT_TRUE(support::message_of(box).ends_with(L" can not be found"));
    EXPECT_FALSE(support::icon_of(box));
    EXPECT_TRUE(support::answer_box(box, IDOK));
    EXPECT_EQ(rows(), L"b.txt|C:\\b|Quilldeck/b\n");
    support::press_key(manager, VK_ESCAPE);
    EXPECT_TRUE(eventually([&] { return !IsWindow(manager); }));
}

} // namespace

} // namespace dialogs
