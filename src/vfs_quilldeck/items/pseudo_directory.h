#pragma once

#include "vfs_quilldeck/items/directory.h"

#include <string>

namespace vfs_quilldeck {

/// A directory that stands in the tree but not in the store: its identity is fixed, its path is
/// empty and known without a request, and it keeps no flags.
class pseudo_directory : public directory {
public:
    std::wstring get_id() const override { return id_; }

    std::wstring get_path() override { return {}; }

    bool is_own_directory() const override { return false; }

    bool is_root_directory() const override { return true; }

    std::uint32_t get_folder_flags() const override { return flags_; }

    void set_folder_flags(std::uint32_t) override {}

protected:
    /// `flags` is the constant answer of `get_folder_flags`.
    pseudo_directory(const client& client, std::wstring id, std::wstring name, std::uint32_t flags)
        : directory(item_link(client), {.id = L"0", .name = std::move(name)}), id_(std::move(id)),
          flags_(flags) {}

private:
    const std::wstring id_;
    const std::uint32_t flags_;
};

} // namespace vfs_quilldeck
