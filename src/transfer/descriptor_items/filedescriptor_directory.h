#pragma once

#include "transfer/descriptor_items/descriptor_group.h"
#include "transfer/wrappers/source_directory.h"

#include <objidl.h>
#include <wrl/client.h>

#include <string>
#include <vector>

namespace transfer {

/// A directory among the virtual files of a data object.
class CFILEDESCRIPTORDirectory final : public CSourceDirectory {
public:
    /// The record of number `nIndex`, or `descriptor_table::root`. Throws for what is null.
    CFILEDESCRIPTORDirectory(IDataObject* pDataObj, descriptor_group_ptr pFGD, std::size_t nIndex);

    /// Empty for the root.
    std::wstring get_name() const override;

protected:
    std::wstring class_name() const override { return L"CFILEDESCRIPTORDirectory"; }

    std::vector<vfs::item_ptr> list() const override;
    std::wstring place() const override;

private:
    const Microsoft::WRL::ComPtr<IDataObject> m_data;
    const descriptor_group_ptr m_group;
    const std::size_t m_index;
};

} // namespace transfer
