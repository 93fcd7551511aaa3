/// What the folders of the drive hand out of this layer.
#pragma once

#include "shell_items/item_id_list.h"
#include "vfs/item.h"

#include <shlobj.h>

#include <span>

namespace commands {

/// As `shell::command_seams::create_command_provider`.
HRESULT create_command_provider(IShellFolder& folder, REFIID iid, void** result) noexcept;

/// As `shell::command_seams::create_item_menu`. The platform's default menu where that calls back,
/// otherwise our own. E_INVALIDARG without items.
HRESULT create_item_menu(HWND owner, IShellFolder& folder, const shell::CItemIDList& list,
                         std::span<const PCUITEMID_CHILD> items, REFIID iid,
                         void** result) noexcept;

/// As `shell::command_seams::create_background_menu`. S_OK and null for an item that is no
/// directory.
HRESULT create_background_menu(IShellFolder& folder, const vfs::item_ptr& directory,
                               const shell::CItemIDList& root, const shell::CItemIDList& path,
                               REFIID iid, void** result) noexcept;

} // namespace commands
