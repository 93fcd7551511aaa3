#pragma once

#include "transfer/wrappers/clipboard_wrapper.h"
#include "transfer/wrappers/refusals.h"

#include <windows.h>

#include <memory>
#include <string>
#include <vector>

namespace transfer {

/// The local paths of a `CF_HDROP` block.
class CHDROPWrapper final : public CClipboardWrapper {
public:
    /// Reads the block and keeps nothing of it. Throws for a block that holds no list.
    explicit CHDROPWrapper(HGLOBAL hGlobal);

    std::wstring take_refusals() override { return m_left_out->take(); }

protected:
    std::wstring class_name() const override { return L"CHDROPWrapper"; }

    std::vector<vfs::item_ptr> list() const override { return m_items; }

private:
    const std::shared_ptr<refusals> m_left_out = std::make_shared<refusals>();
    std::vector<vfs::item_ptr> m_items;
};

} // namespace transfer
