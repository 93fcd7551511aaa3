#include "transfer/restore.h"

#include "shell_items/change_notice.h"

#include <shlobj.h>

namespace transfer {

HRESULT restore_selection(const selection& items) {
    if (items.records.empty() || items.folder->get_folder_flags() != vfs::folder_trash) {
        return E_INVALIDARG;
    }
    const shell::folder_update update(items.list);
    for (const shell::PIDLDATA& record : items.records) {
        items.folder->find_item_by_id(record.get_id(), false)->restore();
        shell::CItemIDList list = items.list;
        list.append(record);
        shell::notify_change(record.is_directory() ? SHCNE_RMDIR : SHCNE_DELETE, list);
    }
    return S_OK;
}

} // namespace transfer
