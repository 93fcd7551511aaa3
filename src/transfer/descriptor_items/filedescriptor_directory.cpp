#include "transfer/descriptor_items/filedescriptor_directory.h"

#include "transfer/descriptor_items/filedescriptor_file.h"

#include <utility>

namespace transfer {

CFILEDESCRIPTORDirectory::CFILEDESCRIPTORDirectory(IDataObject* pDataObj, descriptor_group_ptr pFGD,
                                                   std::size_t nIndex)
    : m_data(pDataObj), m_group(std::move(pFGD)), m_index(nIndex) {
    const auto fail = [](const wchar_t* why) {
        throw CWrapperException(internal_error,
                                std::wstring(L"CFILEDESCRIPTORDirectory::CFILEDESCRIPTORDirectory( "
                                             L"pDataObj, pFGD, nIndex ) : ") +
                                    why);
    };
    if (!m_data) {
        fail(L"pDataObj is NULL");
    }
    if (!m_group) {
        fail(L"pFGD is NULL");
    }
}

std::wstring CFILEDESCRIPTORDirectory::get_name() const {
    return m_index == descriptor_table::root ? std::wstring() : m_group->name(m_index);
}

std::vector<vfs::item_ptr> CFILEDESCRIPTORDirectory::list() const {
    const auto children = m_group->table.children(m_index);
    std::vector<vfs::item_ptr> items;
    items.reserve(children.size());
    for (const std::uint32_t child : children) {
        if (m_group->table.is_directory(child)) {
            items.push_back(
                std::make_shared<CFILEDESCRIPTORDirectory>(m_data.Get(), m_group, child));
        } else {
            items.push_back(std::make_shared<CFILEDESCRIPTORFile>(m_data.Get(), m_group, child));
        }
    }
    return items;
}

std::wstring CFILEDESCRIPTORDirectory::place() const {
    return m_index == descriptor_table::root ? selection_place : m_group->path(m_index);
}

} // namespace transfer
