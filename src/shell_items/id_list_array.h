#pragma once

#include "com/media.h"
#include "com/memory.h"

#include <objidl.h>
#include <shtypes.h>

#include <cstddef>
#include <cstdint>

namespace shell {

/// The format "Shell IDList Array" of a data object of anybody: the absolute list of a folder and
/// behind it those of items in it. All failures are `status_exception`s.
class id_list_array {
public:
    /// Asks `data` for the block and keeps it.
    explicit id_list_array(IDataObject& data);

    /// The number of items.
    std::size_t count() const noexcept;

    /// A list within the block, which lives as long as this. Throws E_INVALIDARG where there is no
    /// whole list.
    const ITEMIDLIST* folder() const { return list(0); }

    const ITEMIDLIST* item(std::size_t index) const { return list(index + 1); }

    /// The absolute list of an item.
    com::unique_id_list absolute(std::size_t index) const;

private:
    const ITEMIDLIST* list(std::size_t index) const;
    std::uint32_t read(std::size_t offset) const;

    com::medium block_;
    com::global_lock locked_;
};

} // namespace shell
