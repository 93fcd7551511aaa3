#pragma once

#include <windows.h>

#include <objidl.h>

namespace local {

/// Shows the properties of local items, beginning at the page that binds them, which is in `mode`,
/// a `shell::sync_page_mode`. Returns when the sheet is closed. The platform makes the sheet where
/// it can; elsewhere it is one of our own, on top of `owner`, with the pages that are registered
/// for the items. Throws a status: E_FAIL when there is no sheet.
void show_property_sheet(IDataObject& items, HWND owner, int mode);

/// The properties of the user's own local folder, at the page that backs it up.
HRESULT back_up_profile(HWND owner);

} // namespace local
