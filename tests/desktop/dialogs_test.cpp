#include "drive_test.h"

#include "com/memory.h"
#include "desktop/drive.h"
#include "desktop/input.h"
#include "desktop/remote_controls.h"
#include "desktop/wait.h"
#include "desktop/windows_of_others.h"

#include <shlobj.h>

#include <future>
#include <string>

namespace {

using namespace desktop;
using Microsoft::WRL::ComPtr;

class shell_dialog_test : public drive_test {};

std::wstring name_of(IShellItem& item) {
    LPWSTR name = nullptr;
    com::check(item.GetDisplayName(SIGDN_NORMALDISPLAY, &name));
    return com::task_ptr<wchar_t>(name).get();
}

ComPtr<IShellItem> item_of(LPCITEMIDLIST list) {
    ComPtr<IShellItem> item;
    com::check(::SHCreateItemFromIDList(list, IID_PPV_ARGS(&item)));
    return item;
}

/// Shows the file dialog at the documents of the drive until it is closed.
HRESULT show_file_dialog(FILEOPENDIALOGOPTIONS options) {
    const com::apartment apartment;
    ComPtr<IShellItem> folder;
    com::check(::SHGetItemFromObject(drive_folder(L"Documents").Get(), IID_PPV_ARGS(&folder)));
    ComPtr<IFileOpenDialog> dialog;
    com::check(::CoCreateInstance(CLSID_FileOpenDialog, nullptr, CLSCTX_INPROC_SERVER,
                                  IID_PPV_ARGS(&dialog)));
    com::check(dialog->SetFolder(folder.Get()));
    com::check(dialog->SetOptions(options));
    com::check(dialog->SetTitle(L"Open from the drive"));
    return dialog->Show(nullptr);
}

std::wstring choose_folder() {
    const com::apartment apartment;
    const com::unique_id_list root = drive_list();
    BROWSEINFOW question{};
    question.pidlRoot = root.get();
    question.lpszTitle = L"A folder of the drive";
    const com::unique_id_list chosen(::SHBrowseForFolderW(&question));
    return chosen ? name_of(*item_of(chosen.get()).Get()) : L"";
}

/// Closes a dialog that is still open when a case ends, so that its thread ends too.
class open_dialog {
public:
    explicit open_dialog(HWND window) noexcept : window_(window) {}

    ~open_dialog() { ::PostMessageW(window_, WM_COMMAND, IDCANCEL, 0); }

    open_dialog(const open_dialog&) = delete;
    open_dialog& operator=(const open_dialog&) = delete;

    HWND window() const noexcept { return window_; }

private:
    HWND window_;
};

HWND file_dialog() {
    return wait_for("the file dialog",
                    [] { return find_window(L"#32770", L"Open from the drive"); });
}

list_view list_of(HWND dialog) {
    return list_view(wait_for("the dialog's list", [&] {
        const HWND view = find_below(dialog, L"SHELLDLL_DefView");
        return view ? find_below(view, WC_LISTVIEWW) : nullptr;
    }));
}

/// The dialog of Wine opens local files only, so that it is cancelled at last. What is picked it
/// reads from the data object that the folder gives for it.
TEST_F(shell_dialog_test, file_dialogs_list_the_drive_and_pick_its_files) {
    const std::wstring picked = L"Welcome to Quilldeck.txt";
    support::sign_in();

    struct {
        FILEOPENDIALOGOPTIONS options;
        bool shows_files;
    } const kinds[] = {{0, true}, {FOS_PICKFOLDERS, false}};

    for (const auto& kind : kinds) {
        auto shown = std::async(std::launch::async, &show_file_dialog, kind.options);
        const open_dialog dialog(file_dialog());
        const list_view list = list_of(dialog.window());
        wait_for("a folder", [&] { return list.find(L"Awkward names"); });
        const auto row = list.find(picked);
        EXPECT_EQ(row.has_value(), kind.shows_files);
        if (row) {
            click(list.place(*row));
            wait_for("the name that was picked",
                     [&] { return text_of(find_below(dialog.window(), WC_EDITW)) == picked; });
        }
        press({VK_ESCAPE});
        EXPECT_EQ(shown.get(), HRESULT_FROM_WIN32(ERROR_CANCELLED));
    }
}

TEST_F(shell_dialog_test, a_folder_dialog_shows_the_drive_as_its_root) {
    support::sign_in();
    auto chosen = std::async(std::launch::async, &choose_folder);
    const open_dialog dialog(wait_for("the folder dialog", [] {
        const HWND found = find_window(L"#32770", {});
        return found && find_below(found, WC_TREEVIEWW) ? found : nullptr;
    }));
    const tree_view tree(find_below(dialog.window(), WC_TREEVIEWW));
    const HTREEITEM folder = wait_for("a folder in the tree", [&]() -> HTREEITEM {
        const HTREEITEM root = tree.root();
        return root ? tree.child(root, L"Music") : nullptr;
    });
    click(tree.place(folder));
    press({VK_RETURN});
    EXPECT_EQ(chosen.get(), L"Music");
}

} // namespace
