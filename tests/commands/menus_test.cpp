#include "command_test.h"

#include "driven_window.h"

#include "commands/item_menu.h"

#include <shlobj.h>

#include <memory>
#include <type_traits>

namespace commands {

namespace {

struct menu_closer {
    void operator()(HMENU menu) const noexcept { DestroyMenu(menu); }
};

/// A menu of a host, and what stands in it: "number:text" for an entry, with "!" for the one that a
/// double click takes and "?" for a grey one, "-" for a line.
class host_menu {
public:
    explicit host_menu(int own_entries = 0) : menu_(CreatePopupMenu()) {
        for (int number = 1; number <= own_entries; ++number) {
            AppendMenuW(menu_.get(), MF_STRING, static_cast<UINT_PTR>(number), L"own");
        }
    }

    HMENU get() const { return menu_.get(); }

    std::wstring told() const {
        std::wstring all;
        for (int index = 0; index < GetMenuItemCount(get()); ++index) {
            wchar_t text[80] = L"";
            MENUITEMINFOW entry{};
            entry.cbSize = sizeof(entry);
            entry.fMask = MIIM_FTYPE | MIIM_ID | MIIM_STATE | MIIM_STRING;
            entry.dwTypeData = text;
            entry.cch = 80;
            GetMenuItemInfoW(get(), static_cast<UINT>(index), TRUE, &entry);
            all += index == 0 ? L"" : L" ";
            if (entry.fType & MFT_SEPARATOR) {
                all += L"-";
                continue;
            }
            all += std::to_wstring(entry.wID) + L":" + text;
            all += (entry.fState & (MFS_DEFAULT | MFS_HILITE)) == (MFS_DEFAULT | MFS_HILITE) ? L"!"
                                                                                             : L"";
            all += (entry.fState & MFS_GRAYED) != 0 ? L"?" : L"";
        }
        return all;
    }

private:
    std::unique_ptr<std::remove_pointer_t<HMENU>, menu_closer> menu_;
};

class menus : public command_test {};

TEST_F(menus, of_items_hold_what_can_be_done_with_them) {
    struct row {
        std::wstring folder;
        std::vector<std::wstring> items;
        UINT flags;
        bool properties;
        const wchar_t* told;
    };

    directory->delete_item(directory->find_item_by_name(L"b.qdtext", true), true);
    const row rows[] = {
        {name,
         {L"a.qdtext"},
         CMF_EXPLORE,
         true,
         L"101:Open! - 105:Delete 106:Rename - 103:Synchronize with Computer - 107:Properties"},
        {name,
         {L"tree"},
         CMF_NORMAL,
         true,
         L"101:Open! - 105:Delete 106:Rename - 103:Synchronize with Computer 102:Share... - "
         L"107:Properties"},
        {name,
         {L"tree", L"a.qdtext"},
         CMF_NORMAL,
         true,
         L"101:Open! - 105:Delete 106:Rename - 103:Synchronize with Computer - 107:Properties"},
        {name, {L"tree"}, CMF_NORMAL, false, L"101:Open! - 105:Delete 106:Rename"},
        {name, {L"tree"}, CMF_DEFAULTONLY, true, L"101:Open! -"},
        {name, {L"tree"}, CMF_VERBSONLY, true, L"101:Open! -"},
        {L"",
         {L"Trash"},
         CMF_NORMAL,
         true,
         L"101:Open! - 105:Delete? 106:Rename? - 107:Properties"},
        {L"",
         {L"Documents", L"Trash"},
         CMF_NORMAL,
         true,
         L"101:Open! - 105:Delete? 106:Rename? - 107:Properties"},
        {L"Trash",
         {L"b.qdtext"},
         CMF_NORMAL,
         true,
         L"104:Restore 105:Delete 106:Rename? - 107:Properties"},
    };
    for (const row& each : rows) {
        SCOPED_TRACE(testing::Message() << each.items.front() << " " << each.flags);
        offer_properties(each.properties);
        const auto folder = listed(each.folder);
        const auto menu = object_of<IContextMenu>(*folder.Get(), each.items);
        const host_menu host;
        EXPECT_EQ(menu->QueryContextMenu(host.get(), 0, 100, 0x7FFF, each.flags), 8);
        EXPECT_EQ(host.told(), each.told);
    }
}

} // namespace

} // namespace commands
