#include "shell_items/shell_folder_interface.h"

#include "com/guard.h"

#include <wrl/client.h>

namespace shell {

vfs::item_ptr get_item(IUnknown& folder, HWND owner) {
    Microsoft::WRL::ComPtr<IShellFolderImpl> ours;
    com::check(folder.QueryInterface(IID_PPV_ARGS(&ours)));
    // Not cleared at the end: it refers to what is the folder's.
    VARIANT item{};
    com::check(ours->GetObject(owner, &item));
    return *static_cast<const vfs::item_ptr*>(item.byref);
}

std::shared_ptr<vfs::directory> get_directory(IUnknown& folder, HWND owner) {
    auto directory = std::dynamic_pointer_cast<vfs::directory>(get_item(folder, owner));
    if (!directory) {
        throw com::status_exception(E_FAIL);
    }
    return directory;
}

} // namespace shell
