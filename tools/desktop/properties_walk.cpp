#include "properties_walk.h"

#include "input.h"
#include "item_menu.h"
#include "wait.h"
#include "walk.h"
#include "windows_of_others.h"

#include <windows.h>

#include <string>

namespace desktop {

namespace {

constexpr const wchar_t* dialog_class = L"#32770";

HWND dialog_of(const std::wstring& title) {
    return wait_for("properties", [&] { return find_window(dialog_class, title); });
}

/// A control of a dialog or of a page in it, which has a text; null until then.
HWND control_with_text(HWND dialog, int id) {
    struct search {
        int id;
        HWND found;
    } looked{id, nullptr};

    ::EnumChildWindows(
        dialog,
        [](HWND window, LPARAM data) -> BOOL {
            auto& each = *reinterpret_cast<search*>(data);
            if (::GetDlgCtrlID(window) == each.id && ::IsWindowVisible(window) &&
                !text_of(window).empty()) {
                each.found = window;
            }
            return each.found == nullptr;
        },
        reinterpret_cast<LPARAM>(&looked));
    return looked.found;
}

void wait_for_text(HWND dialog, int id, const std::wstring& text) {
    wait_for("a text in a dialog", [&] {
        const HWND shown = control_with_text(dialog, id);
        return shown && text_of(shown).find(text) != std::wstring::npos;
    });
}

void leave(HWND dialog) {
    press({VK_ESCAPE});
    wait_for("the end of a dialog", [&] { return !::IsWindow(dialog); });
}

void look_at_file(const explorer& window) {
    choose_from_item_menu(window, L"Documents", L"Welcome to Quilldeck.txt", L"Properties");
    const HWND dialog = dialog_of(L"Welcome to Quilldeck.txt Properties");
    constexpr int price = 496;
    wait_for_text(dialog, price, L"0.00");
    take_picture("properties_file");
    leave(dialog);
}

void share_folder(const explorer& window) {
    const std::wstring name = L"Awkward names";
    constexpr int state = 456;
    const auto shared = std::dynamic_pointer_cast<vfs::directory>(
        stored_folder(L"Documents")->find_item_by_name(name, true));
    const auto end_all = [&] {
        for (const auto& each : shared->get_sharewith_items()) {
            shared->delete_sharing_with_user(each->id);
        }
    };
    end_all();

    choose_from_item_menu(window, L"Documents", name, L"Properties");
    HWND dialog = dialog_of(name + L" Properties");
    constexpr int contents = 377;
    wait_for_text(dialog, contents, L"files");
    take_picture("properties_folder");
    leave(dialog);

    choose_from_item_menu(window, L"Documents", name, L"Share...");
    dialog = dialog_of(name + L" Properties");
    constexpr int user = 450;
    HWND field = nullptr;
    wait_for("the page of sharing",
             [&] { return (field = control_with_text(dialog, state)) != nullptr; });
    take_picture("sharing");
    click(middle_of(::GetDlgItem(::GetParent(field), user)));
    type(L"anna");
    press({VK_RETURN});
    wait_for_text(dialog, state, L"Shared");
    wait_for("the new user", [&] { return shared->get_sharewith_items().size() == 1; });
    take_picture("sharing_user");
    require(true, "a folder was shared with another user");
    leave(dialog);
    end_all();
}

void look_at_binding(const explorer& window) {
    const std::wstring name = L"Awkward names";
    choose_from_item_menu(window, L"Documents", name, L"Synchronize with Computer");
    const HWND dialog = dialog_of(name + L" Properties");
    constexpr int manage = 494;
    wait_for("the page of bindings", [&] { return control_with_text(dialog, manage); });
    take_picture("sync_item");
    // OK stores what the entry has chosen: a full sync.
    press({VK_RETURN});
    wait_for("the end of a dialog", [&] { return !::IsWindow(dialog); });
}

void look_at_drive(explorer& window) {
    window.open({});
    const int row = window.wait_for_row(L"Quilldeck");
    right_click(window.list().place(row));
    wait_for("the drive's menu", [] { return find_window(L"#32768", {}); });
    // Properties stand last.
    press({VK_UP});
    press({VK_RETURN});
    const HWND dialog = dialog_of(L"Properties for Quilldeck");
    constexpr int capacity = 410;
    wait_for_text(dialog, capacity, L"B");
    take_picture("properties_drive");
    require(true, "the drive told who uses it, and how much of it");
    constexpr int bindings = 477;
    click(middle_of(control_with_text(dialog, bindings)));
    const HWND manager = dialog_of(L"Quilldeck synchronization manager");
    const list_view list(find_below(manager, WC_LISTVIEWW));
    require(list.count() == 1, "a folder was bound to a local one");
    take_picture("sync_manager");
    leave(manager);
    leave(dialog);
}

} // namespace

void use_properties(explorer& window) {
    window.open({L"Quilldeck", L"Documents"});
    window.wait_for_row(L"Awkward names");
    look_at_file(window);
    share_folder(window);
    look_at_binding(window);
    look_at_drive(window);
}

} // namespace desktop
