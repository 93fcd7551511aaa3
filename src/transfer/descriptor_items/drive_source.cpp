#include "transfer/descriptor_items/drive_source.h"

#include "com/clipboard_formats.h"
#include "shell_items/id_list_array.h"
#include "shell_items/id_list_bytes.h"
#include "shell_items/item_id_list.h"
#include "transfer/format_values.h"
#include "transfer/wrappers/wrapper_exception.h"
#include "utils/module.h"
#include "vfs_quilldeck/session/session.h"

#include <shlobj.h>

#include <algorithm>
#include <span>
#include <vector>

namespace transfer {

namespace {

std::shared_ptr<vfs::directory> directory_of(const vfs::item_ptr& item) {
    auto directory = std::dynamic_pointer_cast<vfs::directory>(item);
    if (!directory) {
        throw com::status_exception(E_INVALIDARG);
    }
    return directory;
}

} // namespace

std::vector<shell::PIDLDATA> folder_records_of(IDataObject& data) {
    // An absolute list: behind the entries that lead to the drive come records of ours.
    const shell::id_list_array array(data);
    std::vector<shell::PIDLDATA> records;
    auto left = shell::entries_of(array.folder());
    while (!left.empty()) {
        const auto entry = left.first(shell::entry_size(left.data()));
        left = left.subspan(entry.size());
        const auto record = shell::read_record(entry);
        if (record) {
            records.push_back(*record);
        } else if (!records.empty()) {
            throw com::status_exception(E_INVALIDARG);
        }
    }
    return records;
}

bool drive_source::is_ours() {
    if (!m_is_ours) {
        m_is_ours = read_value(*m_data.Get(), com::registered_formats.quilldeck_data_object) != 0;
    }
    return *m_is_ours;
}

std::shared_ptr<vfs::file> drive_source::find_file(std::wstring_view path) {
    if (!m_folder) {
        m_folder = GetVfsDirectoryOfDataObject();
    }
    vfs::item_ptr item = m_folder;
    for (std::size_t from = 0; from <= path.size();) {
        const std::size_t to = std::min(path.find(L'\\', from), path.size());
        const auto directory = std::dynamic_pointer_cast<vfs::directory>(item);
        if (!directory) {
            return nullptr;
        }
        item = directory->find_item_by_name(std::wstring(path.substr(from, to - from)), false);
        from = to + 1;
    }
    return std::dynamic_pointer_cast<vfs::file>(item);
}

std::shared_ptr<vfs::directory> drive_source::GetVfsDirectoryOfDataObject() const {
    const auto fail = [] {
        throw CWrapperException(internal_error, L"Invalid argument in CFILEDESCRIPTORFile::"
                                                L"GetVfsDirectoryOfDataObject( IDataObject* )");
    };
    try {
        auto found = directory_of(vfs_quilldeck::get_client(utils::own_module())->get_root());
        for (const shell::PIDLDATA& record : folder_records_of(*m_data.Get())) {
            found = directory_of(found->find_item_by_name(record.get_name(), false));
        }
        return found;
    } catch (const com::status_exception&) {
        fail();
    } catch (const vfs::exception&) {
        fail();
    }
    return nullptr;
}

} // namespace transfer
