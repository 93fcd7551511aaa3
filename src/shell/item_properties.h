#pragma once

#include "shell_items/item_record.h"
#include "vfs/directory.h"

#include <shobjidl.h>

#include <memory>

namespace shell {

/// The `fmtid` of the storage properties, and of those of them that items have the `pid`.
inline constexpr GUID storage_properties = {
    0xb725f130, 0x47ef, 0x101a, {0xa5, 0xf1, 0x02, 0x60, 0x8c, 0x9e, 0xeb, 0xac}};

enum storage_property : DWORD {
    storage_type = 4,
    storage_name = 10,
    storage_size = 12,
    storage_write_time = 14,
    storage_creation_time = 15,
    storage_access_time = 16,
};

/// Puts the property `key` of an item into `value`, whose old content is cleared. Size and write
/// time are those that `directory`, where the item lies, knows by now; it asks nobody for them, and
/// may be null. Dates are in UTC. Throws E_NOTIMPL for a key that no item has, E_FAIL for a
/// property that this one has not.
void get_property(PIDLDATA record, const SHCOLUMNID& key,
                  const std::shared_ptr<vfs::directory>& directory, VARIANT& value);

} // namespace shell
