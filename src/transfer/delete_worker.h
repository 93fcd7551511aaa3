#pragma once

#include "transfer/selection.h"

#include <windows.h>

namespace transfer {

/// Deletes the selected items on a worker thread: for good when their folder is the Trash, and to
/// the Trash otherwise. Unless `force`, the user is asked first, on the calling thread. `owner` is
/// the parent of all windows. S_OK when the worker was started, S_FALSE when the user does not want
/// it, E_INVALIDARG without items, E_FAIL when no thread can be started.
HRESULT delete_selection(const selection& items, HWND owner, bool force) noexcept;

} // namespace transfer
