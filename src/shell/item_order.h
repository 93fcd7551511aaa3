#pragma once

#include "shell_items/item_record.h"

#include <shobjidl.h>

namespace shell {

/// The order of two lists as `IShellFolder::CompareIDs` answers it: a success code whose low 16
/// bits, with their sign, are positive where `left` comes later, negative where it comes first, 0
/// for equal. `column` is the number of a column in its low byte, with SHCIDS flags. E_INVALIDARG
/// for null or a list that is not ours. Makes no request.
HRESULT compare_lists(LPARAM column, const ITEMIDLIST* left, const ITEMIDLIST* right);

} // namespace shell
