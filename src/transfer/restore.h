#pragma once

#include "transfer/selection.h"

namespace transfer {

/// Brings items of the Trash back to where they were, on the calling thread, and tells the shell of
/// each. E_INVALIDARG without items and for another folder. The failure of an item ends it, and is
/// thrown as it came: those before it are restored, and the shell knows.
HRESULT restore_selection(const selection& items);

} // namespace transfer
