#include "drive_test.h"

#include "com/memory.h"
#include "com/object.h"
#include "desktop/drive.h"
#include "desktop/explorer.h"
#include "desktop/input.h"
#include "desktop/item_menu.h"
#include "desktop/wait.h"
#include "desktop/windows_of_others.h"
#include "vfs/directory.h"
#include "vfs/exceptions.h"
#include "vfs_quilldeck/session/session.h"

#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace {

using namespace desktop;
using Microsoft::WRL::ComPtr;

using row = std::vector<std::wstring>;

const std::wstring drive = L"Quilldeck";

class explorer_test : public drive_test {};

std::wstring detail(IShellFolder2& folder, LPCITEMIDLIST list, UINT column) {
    SHELLDETAILS details{};
    if (FAILED(folder.GetDetailsOf(list, column, &details))) {
        return {};
    }
    EXPECT_EQ(details.str.uType, static_cast<UINT>(STRRET_WSTR));
    const com::task_ptr<wchar_t> text(details.str.pOleStr);
    return text.get();
}

/// What a folder tells of each of its items, by the name.
std::map<std::wstring, row> told_by(const std::wstring& path, UINT columns) {
    ComPtr<IShellFolder2> folder;
    EXPECT_EQ(drive_folder(path).As(&folder), S_OK);
    ComPtr<IEnumIDList> items;
    EXPECT_EQ(folder->EnumObjects(nullptr, SHCONTF_FOLDERS | SHCONTF_NONFOLDERS, &items), S_OK);
    std::map<std::wstring, row> rows;
    for (;;) {
        LPITEMIDLIST list = nullptr;
        if (items->Next(1, &list, nullptr) != S_OK) {
            return rows;
        }
        const com::unique_id_list owner(list);
        row cells;
        for (UINT column = 0; column < columns; ++column) {
            cells.push_back(detail(*folder.Get(), list, column));
        }
        rows[cells.front()] = cells;
    }
}

std::map<std::wstring, row> shown_by(const list_view& list, std::size_t columns) {
    std::map<std::wstring, row> rows;
    for (int index = 0; index < list.count(); ++index) {
        row cells;
        for (std::size_t column = 0; column < columns; ++column) {
            cells.push_back(list.cell(index, static_cast<int>(column)));
        }
        rows[cells.front()] = cells;
    }
    return rows;
}

std::shared_ptr<vfs::directory> documents(const vfs::client_ptr& client) {
    return std::dynamic_pointer_cast<vfs::directory>(client->get_directory(L"Documents", false));
}

TEST_F(explorer_test, signs_in_at_the_first_look_and_shows_what_the_folder_tells) {
    explorer window;
    window.open({drive});
    const HWND dialog =
        wait_for("the login dialog", [] { return find_window(L"#32770", L"Quilldeck login"); });
    EXPECT_FALSE(vfs_quilldeck::is_logged_in(::GetModuleHandleW(nullptr)));
    type(L"demo");
    press({VK_TAB});
    type(L"demo");
    press({VK_RETURN});
    wait_for("the end of the dialog", [&] { return !::IsWindow(dialog); });
    EXPECT_TRUE(vfs_quilldeck::is_logged_in(::GetModuleHandleW(nullptr)));
    window.wait_for_row(L"Documents");

    const row titles = {L"Name", L"Type", L"Size", L"Date accessed", L"Date modified"};
    EXPECT_EQ(window.list().titles(), titles);
    EXPECT_EQ(shown_by(window.list(), titles.size()), told_by(L"", 5));

    // A folder below it, by the tree; its rows have sizes and dates.
    window.open({drive, L"Documents"});
    window.wait_for_row(L"Welcome to Quilldeck.txt");
    const auto told = told_by(L"Documents", 5);
    EXPECT_EQ(shown_by(window.list(), titles.size()), told);
    EXPECT_FALSE(told.at(L"Welcome to Quilldeck.txt")[2].empty());
    EXPECT_FALSE(told.at(L"Welcome to Quilldeck.txt")[4].empty());
}

TEST_F(explorer_test, opens_from_my_computer_by_a_double_click) {
    support::sign_in();
    explorer window;
    window.open({});
    const int place = window.wait_for_row(drive);
    click(window.list().place(place), 2);
    window.wait_for_row(L"Documents");
}

TEST_F(explorer_test, carries_out_what_the_menu_of_an_item_offers) {
    const auto folder = documents(support::sign_in());
    const std::wstring place = L"Documents";
    const std::wstring name = L"C# + C++ notes.md";
    const std::wstring new_name = L"Notes.md";
    explorer window;
    window.open({drive, place});

    // Answered with No.
    choose_from_item_menu(window, place, name, L"Delete");
    const HWND box = wait_for("a question", [] { return find_window(L"#32770", L"Delete File"); });
    press({VK_TAB});
    press({VK_RETURN});
    wait_for("the end of the question", [&] { return !::IsWindow(box); });
    EXPECT_NE(folder->find_item_by_name(name, true), nullptr);

    const std::pair<std::wstring, std::wstring> pages[] = {
        {name, L"Properties"},
        {name, L"Synchronize with Computer"},
        {L"Awkward names", L"Share..."},
    };
    for (const auto& [item, entry] : pages) {
        choose_from_item_menu(window, place, item, entry);
        const HWND dialog =
            wait_for("the properties", [&] { return find_window(L"#32770", item); });
        press({VK_ESCAPE});
        wait_for("the end of the properties", [&] { return !::IsWindow(dialog); });
    }

    choose_from_item_menu(window, place, name, L"Rename");
    wait_for("the edit of a name", [&] { return window.list().edit(); });
    press({VK_CONTROL, L'A'});
    type(new_name);
    press({VK_RETURN});
    window.wait_for_row(new_name);
    EXPECT_NE(folder->find_item_by_name(new_name, true), nullptr);
    folder->rename_item(new_name, name);
}

/// What a view's host tells of its browser.
class host_site final : public com::object<host_site, IServiceProvider> {
public:
    explicit host_site(ComPtr<IExplorerBrowser> browser) : browser_(std::move(browser)) {}

    HRESULT STDMETHODCALLTYPE QueryService(REFGUID service, REFIID iid, void** result) override {
        *result = nullptr;
        return IsEqualGUID(service, SID_SShellBrowser) ? browser_->QueryInterface(iid, result)
                                                       : E_NOINTERFACE;
    }

private:
    const ComPtr<IExplorerBrowser> browser_;
};

LRESULT CALLBACK refresh_at_notice(HWND window, UINT message, WPARAM first, LPARAM second) {
    if (message == WM_APP) {
        return reinterpret_cast<IShellView*>(GetWindowLongPtrW(window, GWLP_USERDATA))->Refresh();
    }
    return DefWindowProcW(window, message, first, second);
}

TEST_F(explorer_test, begins_the_rename_of_a_new_folder_in_the_view) {
    const auto folder = documents(support::sign_in());
    const HWND host = CreateWindowExW(0, L"Static", L"", WS_OVERLAPPEDWINDOW | WS_VISIBLE, 0, 0,
                                      800, 500, nullptr, nullptr, nullptr, nullptr);
    ComPtr<IExplorerBrowser> browser;
    ASSERT_EQ(CoCreateInstance(CLSID_ExplorerBrowser, nullptr, CLSCTX_INPROC_SERVER,
                               IID_PPV_ARGS(&browser)),
              S_OK);
    const RECT all{0, 0, 780, 460};
    const FOLDERSETTINGS settings{FVM_DETAILS, 0};
    ASSERT_EQ(browser->Initialize(host, &all, &settings), S_OK);
    const auto shown = drive_folder(L"Documents");
    ComPtr<IPersistFolder2> placed;
    ASSERT_EQ(shown.As(&placed), S_OK);
    ITEMIDLIST* list = nullptr;
    ASSERT_EQ(placed->GetCurFolder(&list), S_OK);
    const com::unique_id_list owned(list);
    ASSERT_EQ(browser->BrowseToIDList(list, SBSP_ABSOLUTE), S_OK);
    const HWND list_window = find_below(host, WC_LISTVIEWW);
    // Wine's view knows no notices of a folder that is not its own: the host reads it anew.
    ComPtr<IShellView> view;
    ASSERT_EQ(browser->GetCurrentView(IID_PPV_ARGS(&view)), S_OK);
    SetWindowLongPtrW(host, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(view.Get()));
    SetWindowLongPtrW(host, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(&refresh_at_notice));
    const SHChangeNotifyEntry everything{nullptr, TRUE};
    const ULONG notices =
        SHChangeNotifyRegister(host, SHCNRF_ShellLevel, SHCNE_MKDIR, WM_APP, 1, &everything);

    ComPtr<IContextMenu> menu;
    ComPtr<IObjectWithSite> sited;
    ASSERT_EQ(shown->CreateViewObject(host, IID_PPV_ARGS(&menu)), S_OK);
    ASSERT_EQ(menu.As(&sited), S_OK);
    ASSERT_EQ(sited->SetSite(com::make<host_site>(browser).Get()), S_OK);
    const HMENU popup = CreatePopupMenu();
    // Once as from a program, and once where a menu was.
    for (const std::wstring name : {L"New Folder", L"New Folder (2)"}) {
        CMINVOKECOMMANDINFO info{};
        info.cbSize = sizeof(info);
        info.lpVerb = "NewFolder";
        EXPECT_EQ(menu->InvokeCommand(&info), S_OK);
        EXPECT_NE(folder->find_item_by_name(name, true), nullptr);
        EXPECT_EQ(text_of(ListView_GetEditControl(list_window)), name);
        ListView_CancelEditLabel(list_window);
        EXPECT_NE(menu->QueryContextMenu(popup, 0, 1, 0x7FFF, CMF_NORMAL), 0);
    }
    folder->delete_item(L"New Folder", true);
    folder->delete_item(L"New Folder (2)", true);
    DestroyMenu(popup);
    SHChangeNotifyDeregister(notices);
    sited->SetSite(nullptr);
    browser->Destroy();
    DestroyWindow(host);
}

TEST_F(explorer_test, renames_with_f2_and_outlives_a_right_click) {
    const auto folder = documents(support::sign_in());
    explorer window;
    window.open({drive, L"Documents"});
    const std::wstring name = L"Übersicht & Größe.md";
    window.rename(L"C# + C++ notes.md", name);
    window.wait_for_row(name);
    EXPECT_NE(folder->find_item_by_name(name, true), nullptr);
    EXPECT_THROW(folder->find_item_by_name(L"C# + C++ notes.md", true),
                 vfs::item_not_found_exception);

    right_click(window.list().place(window.wait_for_row(name)));
    press({VK_ESCAPE});
    window.rename(name, L"C# + C++ notes.md");
    window.wait_for_row(L"C# + C++ notes.md");
    EXPECT_NE(folder->find_item_by_name(L"C# + C++ notes.md", true), nullptr);
}

} // namespace
