#include "explorer.h"

#include "input.h"
#include "wait.h"
#include "windows_of_others.h"

#include "utils/unique_handle.h"

#include <optional>
#include <stdexcept>

namespace desktop {

namespace {

const std::wstring window_class = L"ExplorerWClass";

void start() {
    std::wstring command = L"explorer.exe";
    STARTUPINFOW startup{};
    startup.cb = sizeof startup;
    PROCESS_INFORMATION process{};
    if (!::CreateProcessW(nullptr, command.data(), nullptr, nullptr, FALSE, 0, nullptr, nullptr,
                          &startup, &process)) {
        throw std::runtime_error("the file manager did not start");
    }
    const utils::unique_handle owner(process.hProcess);
    const utils::unique_handle thread(process.hThread);
    ::WaitForInputIdle(owner.get(), 30'000);
}

std::string narrow(const std::wstring& text) {
    std::string result;
    for (const wchar_t unit : text) {
        result += unit < 0x80 ? static_cast<char>(unit) : '?';
    }
    return result;
}

/// The point that `place` gives once it no longer moves: an item that is still being sorted in, or
/// a window that is being laid out, would be missed. (A click beside the items fells Wine's tree.)
template <class Place>
POINT resting(Place place) {
    constexpr int looks = 5;
    POINT last{};
    int same = 0;
    return wait_for("an item to rest", [&] {
        const POINT now = place();
        same = now.x == last.x && now.y == last.y ? same + 1 : 0;
        last = now;
        return same >= looks ? std::optional(now) : std::nullopt;
    });
}

} // namespace

explorer::explorer() {
    start();
    window_ = wait_for("the file manager's window", [] { return find_window(window_class, {}); });
    // The window is done when it shows its first folder.
    wait_for("the file manager's list", [this] { return list().count() > 0; });
    ::SetWindowPos(window_, nullptr, 20, 20, 960, 560, SWP_NOZORDER);
}

explorer::~explorer() {
    ::PostMessageW(window_, WM_CLOSE, 0, 0);
}

void explorer::open(const std::vector<std::wstring>& path) {
    const tree_view shown = tree();
    // The desktop is the second tree: the first one holds favourites.
    HTREEITEM item = nullptr;
    for (const wchar_t* name : {L"Desktop", L"My Computer"}) {
        item = wait_for(narrow(name), [&] { return shown.child(item, name); });
    }
    for (const std::wstring& name : path) {
        if (!shown.expanded(item)) {
            click(resting([&] { return shown.button(item); }));
        }
        item = wait_for(narrow(name) + " in the tree", [&] { return shown.child(item, name); });
    }
    // A second click on the open folder would begin to rename it.
    if (shown.selected() != item) {
        click(resting([&] { return shown.place(item); }));
    }
}

void explorer::wait_until_closed() const {
    constexpr DWORD pause = 250;
    while (::IsWindow(window_)) {
        ::Sleep(pause);
    }
}

list_view explorer::list() const {
    return list_view(wait_for("the list of a folder", [this] {
        const HWND view = find_below(window_, L"SHELLDLL_DefView");
        return view ? find_below(view, WC_LISTVIEWW) : nullptr;
    }));
}

int explorer::wait_for_row(const std::wstring& name) const {
    return wait_for(narrow(name) + " in the list", [&]() -> std::optional<int> {
        try {
            return list().find(name);
        } catch (const window_gone&) {
            return std::nullopt; // the list of the folder before
        }
    });
}

void explorer::rename(const std::wstring& name, const std::wstring& new_name) const {
    const int row = wait_for_row(name);
    const list_view shown = list();
    // A click on a selected row would begin another edit when no second one follows.
    if (shown.selected() != row) {
        click(resting([&] { return shown.place(row); }));
        wait_for("a row to be selected", [&] { return shown.selected() == row; });
    }
    press({VK_F2});
    wait_for("the edit of a name", [&] { return shown.edit(); });
    press({VK_CONTROL, L'A'});
    type(new_name);
    press({VK_RETURN});
}

tree_view explorer::tree() const {
    return tree_view(find_below(window_, WC_TREEVIEWW));
}

} // namespace desktop
