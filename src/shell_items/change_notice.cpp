#include "shell_items/change_notice.h"

#include <shlobj.h>

namespace shell {

void notify_change(LONG event, const CItemIDList& list) noexcept {
    if (const com::unique_id_list flat = list.to_list()) {
        SHChangeNotify(event, SHCNF_IDLIST | SHCNF_FLUSH, flat.get(), nullptr);
    }
}

void notify_change(LONG event, const CItemIDList& list, const CItemIDList& other) noexcept {
    const com::unique_id_list flat = list.to_list();
    const com::unique_id_list flat_other = other.to_list();
    if (flat && flat_other) {
        SHChangeNotify(event, SHCNF_IDLIST | SHCNF_FLUSH, flat.get(), flat_other.get());
    }
}

folder_update::~folder_update() {
    notify_change(SHCNE_UPDATEDIR, folder_);
}

} // namespace shell
