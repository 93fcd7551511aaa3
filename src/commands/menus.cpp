#include "commands/menus.h"

#include "com/guard.h"
#include "commands/background_menu.h"
#include "commands/command_provider.h"
#include "commands/item_context_menu.h"
#include "commands/item_menu.h"
#include "vfs/directory.h"

#include <vector>

namespace commands {

namespace {

using Microsoft::WRL::ComPtr;

/// The platform's calls take them so.
using child_lists = std::vector<PCUITEMID_CHILD>;

com::unique_id_list flattened(const shell::CItemIDList& list) {
    com::unique_id_list flat = list.to_list();
    if (!flat) {
        throw com::status_exception(E_OUTOFMEMORY);
    }
    return flat;
}

HRESULT create_platform_menu(HWND owner, IShellFolder& folder, const shell::CItemIDList& list,
                             child_lists& items, IContextMenu** menu) {
    const com::unique_id_list flat = flattened(list);
    const HKEY no_class = nullptr;
    return CDefFolderMenu_Create2(flat.get(), owner, static_cast<UINT>(items.size()), items.data(),
                                  &folder, &item_menu_callback, 1, &no_class, menu);
}

ComPtr<IContextMenu> create_own_menu(HWND owner, IShellFolder& folder, child_lists& items) {
    const auto count = static_cast<UINT>(items.size());
    SFGAOF attributes = CItemContextMenu::needed_attributes;
    com::check(folder.GetAttributesOf(count, items.data(), &attributes));
    ComPtr<IDataObject> data;
    com::check(
        folder.GetUIObjectOf(owner, count, items.data(), __uuidof(IDataObject), nullptr, &data));
    return com::make<CItemContextMenu>(owner, data, attributes,
                                       com::unique_id_list(ILCloneFirst(items.front())));
}

} // namespace

HRESULT create_command_provider(IShellFolder& folder, REFIID iid, void** result) noexcept {
    return com::guard([&] {
        com::cleared(result);
        return com::make<CExplorerCommandProviderImpl>(&folder)->QueryInterface(iid, result);
    });
}

HRESULT create_item_menu(HWND owner, IShellFolder& folder, const shell::CItemIDList& list,
                         std::span<const PCUITEMID_CHILD> items, REFIID iid,
                         void** result) noexcept {
    return com::guard([&]() -> HRESULT {
        com::cleared(result);
        if (items.empty()) {
            return E_INVALIDARG;
        }
        child_lists children(items.begin(), items.end());
        ComPtr<IContextMenu> menu;
        if (platform_menu_calls_back()) {
            com::check(create_platform_menu(owner, folder, list, children, &menu));
        } else {
            menu = create_own_menu(owner, folder, children);
        }
        return menu->QueryInterface(iid, result);
    });
}

HRESULT create_background_menu(IShellFolder& folder, const vfs::item_ptr& directory,
                               const shell::CItemIDList& root, const shell::CItemIDList& path,
                               REFIID iid, void** result) noexcept {
    return com::guard([&]() -> HRESULT {
        com::cleared(result);
        const auto opened = std::dynamic_pointer_cast<vfs::directory>(directory);
        return opened ? com::make<CBGContextMenu>(&folder, opened, root, path)
                            ->QueryInterface(iid, result)
                      : S_OK;
    });
}

} // namespace commands
