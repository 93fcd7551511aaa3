#include "transfer/wrappers/source_directory.h"

#include <algorithm>

namespace transfer {

bool CSourceDirectory::has_subfolders() const {
    return std::ranges::any_of(list(), [](const vfs::item_ptr& child) {
        return child->get_type() == vfs::type_directory;
    });
}

vfs::item_ptr CSourceDirectory::find_item_by_name(const std::wstring& name, bool) {
    return find(name, &vfs::item::get_name);
}

vfs::item_ptr CSourceDirectory::find_item_by_id(const std::wstring& id, bool) {
    return find(id, &vfs::item::get_id);
}

vfs::item_ptr CSourceDirectory::find(const std::wstring& wanted,
                                     std::wstring (vfs::item::*key)() const) const {
    for (const vfs::item_ptr& child : list()) {
        if (((*child).*key)() == wanted) {
            return child;
        }
    }
    throw CWrapperNotFoundException(
        internal_error, filled(L"Error: Item '%1%' not found at '%2%'", {wanted, place()}));
}

} // namespace transfer
