#include "commands/item_menu.h"

#include "com/guard.h"
#include "commands/menu_entries.h"
#include "resources/string_ids.h"
#include "shell_items/seams.h"
#include "ui/message.h"
#include "vfs/exceptions.h"

#include <algorithm>

namespace commands {

namespace {

/// Flags of a menu beside which it is an ordinary one.
constexpr UINT unrestricted_flags = 0x30000;

shell::selection selection_of(IDataObject& object) {
    shell::selection items;
    com::check(shell::get_seams().transfer.get_selection(object, items));
    return items;
}

void merge_sharing(const shell::selection& items, QCMINFO& info) {
    const UINT first = info.idCmdFirst;
    insert_separator(info.hmenu, 2);
    const shell::PIDLDATA& record = items.records.front();
    if (items.records.size() == 1 && record.is_directory() && record.is_own_directory != 0) {
        insert_entry(info.hmenu, 3, first + item_share, IDS_MENU_SHARE);
    }
    // Ahead of Share, as it takes its place.
    insert_entry(info.hmenu, 3, first + item_synchronize, IDS_MENU_SYNCHRONIZE);
    info.idCmdFirst = first + item_synchronize + 1;
}

HRESULT merge(const shell::selection& items, UINT flags, QCMINFO& info) {
    const UINT first = info.idCmdFirst;
    if ((flags & CMF_DEFAULTONLY) == 0) {
        if (items.folder->get_folder_flags() == vfs::folder_trash) {
            insert_entry(info.hmenu, 0, first + item_restore, IDS_MENU_RESTORE);
            info.idCmdFirst = first + item_restore + 1;
            return S_OK;
        }
        if ((flags & ~unrestricted_flags) != 0) {
            return S_OK;
        }
        const bool any_root = std::ranges::any_of(items.records, [](const shell::PIDLDATA& record) {
            return record.is_root_directory != 0;
        });
        if (!any_root && shell::get_seams().dialogs.show_properties) {
            merge_sharing(items, info);
        }
    }
    insert_separator(info.hmenu, 0);
    insert_entry(info.hmenu, 0, first + item_open, IDS_MENU_OPEN, MFS_DEFAULT | MFS_HILITE);
    info.idCmdFirst = std::max(info.idCmdFirst, first + item_open + 1);
    return S_OK;
}

HRESULT show_properties(IDataObject& object, HWND owner, shell::properties_page page) {
    const auto show = shell::get_seams().dialogs.show_properties;
    return show ? show(object, owner, page) : E_NOTIMPL;
}

HRESULT invoke(IDataObject& object, HWND owner, WPARAM command) {
    const shell::transfer_seams& transfer = shell::get_seams().transfer;
    switch (static_cast<UINT>(command)) {
    case DFM_CMD_DELETE:
        return transfer.remove(object, owner);
    case DFM_CMD_PROPERTIES:
        return show_properties(object, owner, shell::properties_page::general);
    case item_open:
        return transfer.open(object, owner, nullptr, false);
    case item_share:
        return show_properties(object, owner, shell::properties_page::sharing);
    case item_synchronize:
        return show_properties(object, owner, shell::properties_page::synchronization);
    case item_restore:
        return transfer.restore(object, owner);
    default:
        return S_FALSE;
    }
}

} // namespace

HRESULT CALLBACK item_menu_callback(IShellFolder*, HWND hwnd, IDataObject* pdtobj, UINT uMsg,
                                    WPARAM wParam, LPARAM lParam) noexcept {
    return com::guard([&]() -> HRESULT {
        switch (uMsg) {
        case DFM_MERGECONTEXTMENU:
            return merge(selection_of(com::required(pdtobj)), static_cast<UINT>(wParam),
                         com::required(reinterpret_cast<QCMINFO*>(lParam)));
        case DFM_INVOKECOMMAND:
            return invoke(com::required(pdtobj), hwnd, wParam);
        default:
            return E_NOTIMPL;
        }
    });
}

} // namespace commands
