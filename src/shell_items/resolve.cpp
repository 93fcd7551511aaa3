#include "shell_items/resolve.h"

#include "com/guard.h"
#include "vfs/directory.h"

#include <memory>

namespace shell {

vfs::item_ptr resolve(vfs::item_ptr item, std::span<const PIDLDATA> way) {
    for (const PIDLDATA& record : way) {
        const auto directory = std::dynamic_pointer_cast<vfs::directory>(item);
        if (!directory) {
            throw com::status_exception(E_FAIL);
        }
        item = directory->find_item_by_id(record.get_id(), false);
    }
    return item;
}

} // namespace shell
