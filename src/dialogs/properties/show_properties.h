#pragma once

#include "shell_items/seams.h"

namespace dialogs {

/// Shows the properties of the items of a data object of this program, modally on top of `owner`,
/// at `page`. S_OK also when the user cancelled. E_INVALIDARG without items, or why they cannot be
/// had.
HRESULT show_properties(IDataObject& items, HWND owner, shell::properties_page page) noexcept;

} // namespace dialogs
