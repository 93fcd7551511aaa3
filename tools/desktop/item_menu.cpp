#include "item_menu.h"

#include "drive.h"
#include "input.h"
#include "wait.h"
#include "windows_of_others.h"

#include "com/guard.h"

#include <algorithm>
#include <array>
#include <memory>
#include <stdexcept>
#include <type_traits>

namespace desktop {

namespace {

using com::check;
using Microsoft::WRL::ComPtr;

struct menu_closer {
    void operator()(HMENU menu) const noexcept { ::DestroyMenu(menu); }
};

HWND shown_menu() {
    return find_window(L"#32768", {});
}

/// The middle of the entry with that index. Another process's menu tells nothing but its size.
POINT place_of(HWND menu, const std::vector<std::wstring>& entries, std::size_t index) {
    const auto lines_before = [&](std::size_t end) {
        return static_cast<LONG>(
            std::count(entries.begin(), entries.begin() + static_cast<std::ptrdiff_t>(end), L"-"));
    };
    RECT frame{};
    ::GetWindowRect(menu, &frame);
    constexpr LONG margin = 4;
    const LONG line = ::GetSystemMetrics(SM_CYMENUSIZE) / 2;
    const LONG lines = lines_before(entries.size());
    const LONG texts = static_cast<LONG>(entries.size()) - lines;
    const LONG all = frame.bottom - frame.top - 2 * margin - lines * line;
    const LONG above = lines_before(index);
    const LONG texts_above = static_cast<LONG>(index) - above;
    return {(frame.left + frame.right) / 2,
            frame.top + margin + above * line + all * (2 * texts_above + 1) / (2 * texts)};
}

} // namespace

std::vector<std::wstring> item_menu_of(const std::wstring& path) {
    const std::size_t begin = path.rfind(L'\\') + 1;
    const auto folder = drive_folder(begin == 0 ? L"" : path.substr(0, begin - 1));
    std::wstring name = path.substr(begin);
    LPITEMIDLIST list = nullptr;
    check(folder->ParseDisplayName(nullptr, nullptr, name.data(), nullptr, &list, nullptr));
    const com::unique_id_list owned(list);
    PCUITEMID_CHILD item = list;
    ComPtr<IContextMenu> menu;
    check(folder->GetUIObjectOf(nullptr, 1, &item, __uuidof(IContextMenu), nullptr,
                                reinterpret_cast<void**>(menu.GetAddressOf())));
    const std::unique_ptr<std::remove_pointer_t<HMENU>, menu_closer> popup(::CreatePopupMenu());
    check(menu->QueryContextMenu(popup.get(), 0, 0, 0x7FFF, CMF_NORMAL));
    std::vector<std::wstring> entries;
    for (int index = 0; index < ::GetMenuItemCount(popup.get()); ++index) {
        std::array<wchar_t, 80> text{L'-'};
        ::GetMenuStringW(popup.get(), static_cast<UINT>(index), text.data(),
                         static_cast<int>(text.size()), MF_BYPOSITION);
        entries.emplace_back(*text.data() ? text.data() : L"-");
    }
    return entries;
}

void open_item_menu(const explorer& window, const std::wstring& name) {
    right_click(window.list().place(window.wait_for_row(name)));
    wait_for("the menu of an item", &shown_menu);
}

void choose_from_item_menu(const explorer& window, const std::wstring& folder,
                           const std::wstring& name, const std::wstring& entry) {
    const auto entries = item_menu_of(folder.empty() ? name : folder + L"\\" + name);
    const auto found = std::ranges::find(entries, entry);
    if (found == entries.end()) {
        throw std::runtime_error("an item's menu has no such entry");
    }
    open_item_menu(window, name);
    const HWND menu = shown_menu();
    click(place_of(menu, entries, static_cast<std::size_t>(found - entries.begin())));
    wait_for("the end of a menu", [&] { return !::IsWindowVisible(menu); });
}

} // namespace desktop
