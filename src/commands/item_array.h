/// What a command gets out of the selection that the shell hands to it.
#pragma once

#include "shell_items/item_record.h"

#include <objidl.h>
#include <shobjidl.h>
#include <wrl/client.h>

#include <optional>

namespace commands {

/// 0 for no array.
DWORD count_of(IShellItemArray* items);

/// The record of an item; nothing for one that is not ours. What it tells needs no folder and no
/// store. Throws E_FAIL on a platform that cannot tell an item's list.
std::optional<shell::PIDLDATA> record_of(IShellItemArray& items, DWORD index);

/// The record of the one item that is selected; nothing for none, several, or what is not ours.
std::optional<shell::PIDLDATA> single_record(IShellItemArray* items);

/// The data object of the selection, made by `folder`, in which it lies, where the platform's array
/// cannot. Throws a status.
Microsoft::WRL::ComPtr<IDataObject> data_object_of(IShellItemArray& items, IShellFolder& folder);

} // namespace commands
