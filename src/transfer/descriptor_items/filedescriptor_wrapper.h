#pragma once

#include "transfer/descriptor_items/filedescriptor_directory.h"
#include "transfer/wrappers/clipboard_wrapper.h"
#include "transfer/wrappers/refusals.h"

#include <windows.h>

#include <optional>
#include <string>
#include <vector>

namespace transfer {

/// The virtual files of a data object.
class CFILEDESCRIPTORWrapper final : public CClipboardWrapper {
public:
    /// `hGlobal` is the block of the format "FileGroupDescriptorW", of which nothing is kept. The
    /// items hold a reference on the data object.
    CFILEDESCRIPTORWrapper(IDataObject* pDataObj, HGLOBAL hGlobal);

    std::wstring take_refusals() override { return m_left_out.take(); }

protected:
    std::wstring class_name() const override { return L"CFILEDESCRIPTORWrapper"; }

    std::vector<vfs::item_ptr> list() const override { return m_root->get_items(); }

private:
    void note_what_is_left_out(const descriptor_group& group);

    refusals m_left_out;
    std::shared_ptr<CFILEDESCRIPTORDirectory> m_root;
};

} // namespace transfer
