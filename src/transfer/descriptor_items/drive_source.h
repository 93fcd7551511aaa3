#pragma once

#include "shell_items/item_record.h"
#include "vfs/directory.h"
#include "vfs/file.h"

#include <objidl.h>
#include <wrl/client.h>

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace transfer {

/// The way from the drive to the folder whose items `data`, one of this program's own, holds;
/// `data` may come from another process. Throws `com::status_exception` for one that does not tell
/// it.
std::vector<shell::PIDLDATA> folder_records_of(IDataObject& data);

/// Where the items of a data object are, if they are items of this drive: then a file can be copied
/// inside the store. Belongs to the apartment of the data object.
class drive_source {
public:
    explicit drive_source(IDataObject* data) : m_data(data) {}

    /// Whether the data object carries the mark of this program's own ones. Asks once.
    bool is_ours();

    /// The store's own file at `path`, a path below the folder of the selection. The folder is
    /// looked up once. Throws `CWrapperException` where the data object names no folder of the
    /// drive, and the `vfs::exception` of a lookup below it; null for what is no file.
    std::shared_ptr<vfs::file> find_file(std::wstring_view path);

private:
    std::shared_ptr<vfs::directory> GetVfsDirectoryOfDataObject() const;

    const Microsoft::WRL::ComPtr<IDataObject> m_data;
    std::optional<bool> m_is_ours;
    std::shared_ptr<vfs::directory> m_folder;
};

} // namespace transfer
