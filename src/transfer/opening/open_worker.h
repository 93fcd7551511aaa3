#pragma once

#include "transfer/selection.h"

#include <windows.h>

namespace transfer {

/// Opens the selected items on a worker thread: folders in the file manager, music and video as
/// links, all other files through local copies that are bound for upload, so that what is changed
/// in them goes back. `verb_key`, which may be null, is a class whose program opens them; it stays
/// the caller's. With `open_with` the user chooses the program. `owner` is the parent of all
/// windows. S_OK when the worker was started, E_INVALIDARG without items, E_FAIL when no thread can
/// be started.
HRESULT open_selection(const selection& items, HWND owner, HKEY verb_key, bool open_with) noexcept;

} // namespace transfer
