#pragma once

#include "transfer/wrappers/not_offered.h"

#include <string>
#include <vector>

namespace transfer {

/// A directory that a transfer reads from: it can be listed and searched, and nothing else. It
/// lives on the transfer's thread.
class CSourceDirectory : public not_offered_directory {
public:
    std::int32_t get_type() const override { return vfs::type_directory; }

    std::vector<vfs::item_ptr> get_items() override { return list(); }

    bool has_subfolders() const override;

    bool is_shared() const override { return false; }

    bool is_home_folder() const override { return false; }

    bool is_own_directory() const override { return true; }

    bool is_root_directory() const override { return false; }

    std::uint32_t get_folder_flags() const override { return 0; }

    void set_folder_flags(std::uint32_t) override {}

    /// Compares with regard to case, unlike a remote directory: local names are sources and never
    /// clash with each other.
    vfs::item_ptr find_item_by_name(const std::wstring& name, bool refresh) override;
    /// Always in vain, as the items of a source have no id.
    vfs::item_ptr find_item_by_id(const std::wstring& id, bool refresh) override;

protected:
    virtual std::vector<vfs::item_ptr> list() const = 0;
    /// Where the items are, in the failure of a search.
    virtual std::wstring place() const = 0;

private:
    vfs::item_ptr find(const std::wstring& wanted, std::wstring (vfs::item::*key)() const) const;
};

/// The place of the items that were selected.
inline constexpr auto selection_place = L"-=Root=-";

} // namespace transfer
