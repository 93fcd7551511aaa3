#pragma once

#include "shell_items/selection.h"

#include <objidl.h>
#include <shlobj.h>

namespace commands {

/// What this program's entries of an item's menu mean, as offsets from the first identifier.
enum item_command : UINT {
    item_open = 0,
    item_share = 1,
    item_synchronize = 2,
    item_restore = 3,
};

/// The callback of the platform's default folder menu (LPFNDFMCALLBACK): adds our entries to the
/// menu of items and carries them out, and what the platform's own entries mean for them. `pdtobj`
/// is a data object of this program.
HRESULT CALLBACK item_menu_callback(IShellFolder* psf, HWND hwnd, IDataObject* pdtobj, UINT uMsg,
                                    WPARAM wParam, LPARAM lParam) noexcept;

} // namespace commands
