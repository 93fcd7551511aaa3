#pragma once

#include "utils/unique_handle.h"

#include <objidl.h>
#include <prsht.h>

#include <span>
#include <vector>

namespace local {

/// The pages for a data object of all property sheet extensions that are registered under class
/// keys, in the order of the keys: each extension once, and none that fails. They belong to this
/// object until a sheet takes them.
class registered_pages {
public:
    registered_pages(IDataObject& items, std::span<const utils::unique_registry_key> keys);
    registered_pages(const registered_pages&) = delete;
    registered_pages& operator=(const registered_pages&) = delete;
    ~registered_pages();

    const std::vector<HPROPSHEETPAGE>& get() const noexcept { return pages_; }

    /// A sheet has taken them, all of them.
    void release() noexcept { pages_.clear(); }

private:
    static BOOL CALLBACK add(HPROPSHEETPAGE page, LPARAM self) noexcept;

    void add_pages(const CLSID& extension, IDataObject& items, HKEY key);

    std::vector<HPROPSHEETPAGE> pages_;
};

} // namespace local
