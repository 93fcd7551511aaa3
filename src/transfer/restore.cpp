#include "transfer/restore.h"

#include "shell_items/change_notice.h"

#include <shlobj.h>

namespace transfer {

namespace {

/// Lets views of the folder read it anew, however it ends.
class folder_update {
public:
    explicit folder_update(const shell::CItemIDList& folder) : m_folder(folder) {}

    folder_update(const folder_update&) = delete;
    folder_update& operator=(const folder_update&) = delete;

    ~folder_update() { shell::notify_change(SHCNE_UPDATEDIR, m_folder); }

private:
    const shell::CItemIDList& m_folder;
};

} // namespace

HRESULT restore_selection(const selection& items) {
    if (items.records.empty() || items.folder->get_folder_flags() != vfs::folder_trash) {
        return E_INVALIDARG;
    }
    const folder_update update(items.list);
    for (const shell::PIDLDATA& record : items.records) {
        items.folder->find_item_by_id(record.get_id(), false)->restore();
        shell::CItemIDList list = items.list;
        list.append(record);
        shell::notify_change(record.is_directory() ? SHCNE_RMDIR : SHCNE_DELETE, list);
    }
    return S_OK;
}

} // namespace transfer
