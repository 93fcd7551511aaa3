#pragma once

#include "shell_items/item_id_list.h"

#include <shobjidl.h>
#include <wrl/client.h>

namespace shell {

/// A fresh folder object of the calling apartment for the folder to which `path` leads from the
/// drive, whose absolute list `root` is. Throws a status.
Microsoft::WRL::ComPtr<IShellFolder> bind_folder(const CItemIDList& root, const CItemIDList& path);

} // namespace shell
