/// What menus and toolbars do with the items of a data object. Each of these takes one of this
/// program, made in the calling apartment, and answers E_NOINTERFACE for any other.
#pragma once

#include "transfer/selection.h"

#include <windows.h>

#include <objidl.h>

namespace transfer {

/// Copies what the data object holds.
HRESULT read_items(IDataObject& items, selection& result) noexcept;

/// As `open_selection`.
HRESULT open_items(IDataObject& items, HWND owner, HKEY verb_key, bool open_with) noexcept;

/// As `delete_selection`, once the user has agreed.
HRESULT remove_items(IDataObject& items, HWND owner) noexcept;

/// As `restore_selection`; its failure is shown and gives E_FAIL.
HRESULT restore_items(IDataObject& items, HWND owner) noexcept;

} // namespace transfer
