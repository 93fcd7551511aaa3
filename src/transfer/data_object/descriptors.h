#pragma once

#include "shell_items/item_record.h"
#include "vfs/directory.h"
#include "vfs/file.h"

#include <windows.h>

#include <shlobj.h>

#include <cstddef>
#include <memory>
#include <span>
#include <string>
#include <vector>

namespace transfer {

/// Items of a folder, and all that they hold, as the table of virtual files by which other programs
/// take them: one record for each, with its path below the folder. A directory stands before what
/// it holds, and all of that before the next item.
class CDescriptors {
public:
    /// Lists everything below the items that `selected` names by their ids, unless that was done
    /// before. The first failure ends it and is thrown: E_UNEXPECTED for what cannot stand in such
    /// a table, otherwise what the items throw. The records that were made stay, and make the same
    /// failure known at each later call.
    void build(vfs::directory& folder, std::span<const shell::PIDLDATA> selected);

    const std::vector<FILEDESCRIPTORW>& records() const noexcept { return m_records; }

    /// The file of a record, looked up by its path. Throws E_UNEXPECTED where there is none, and
    /// what the items throw. `index` is below the number of records.
    std::shared_ptr<vfs::file> find_file(const std::shared_ptr<vfs::directory>& folder,
                                         std::size_t index) const;

private:
    void append_all(vfs::directory& folder, std::span<const shell::PIDLDATA> selected);
    void append(const vfs::item_ptr& item, const std::wstring& prefix);
    void append_children(const vfs::item_ptr& item, const std::wstring& prefix, int depth);

    std::vector<FILEDESCRIPTORW> m_records;
    /// The records whose paths have no room in them, in their order: they lead nowhere, or to
    /// something else.
    std::vector<std::size_t> m_cut;
    HRESULT m_status = S_OK;
};

} // namespace transfer
