#pragma once

#include "transfer/descriptor_items/descriptor_table.h"
#include "transfer/descriptor_items/drive_source.h"

#include <memory>
#include <string>

namespace transfer {

/// What all items of one data object share.
struct descriptor_group {
    descriptor_group(IDataObject* data, std::span<const std::byte> block)
        : table(block), drive(data) {}

    std::wstring path(std::size_t index) const {
        const auto text = table.path(index);
        return {text.begin(), text.end()};
    }

    std::wstring name(std::size_t index) const {
        const auto text = table.name(index);
        return {text.begin(), text.end()};
    }

    const descriptor_table table;
    drive_source drive;
};

using descriptor_group_ptr = std::shared_ptr<descriptor_group>;

} // namespace transfer
