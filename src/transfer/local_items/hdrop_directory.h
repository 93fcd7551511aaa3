#pragma once

#include "transfer/local_items/hdrop_item.h"
#include "transfer/wrappers/refusals.h"
#include "transfer/wrappers/source_directory.h"

#include <memory>
#include <string>
#include <vector>

namespace transfer {

/// A local directory. The disk is read at each call.
class CHDROPDirectory final : public CSourceDirectory, public CHDROPItem {
public:
    /// Notes what cannot be read in `left_out`. Throws for a path that does not exist.
    CHDROPDirectory(std::wstring path, std::shared_ptr<refusals> left_out);

    std::wstring get_name() const override { return name(); }

    std::int32_t get_access() const override { return vfs::access_private; }

protected:
    std::wstring class_name() const override { return L"CHDROPDirectory"; }

    std::vector<vfs::item_ptr> list() const override;

    std::wstring place() const override { return path(); }

private:
    const std::shared_ptr<refusals> m_left_out;
};

/// The local item at `path`, or null, with a note in `left_out`, when it cannot be read by this
/// path.
vfs::item_ptr make_local_item(const std::wstring& path, bool directory,
                              const std::shared_ptr<refusals>& left_out);

} // namespace transfer
