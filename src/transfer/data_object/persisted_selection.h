/// The bytes in which a data object outlives its program. All is little-endian; there is no mark
/// and no version. Plain code: the bytes come from anybody.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <span>
#include <vector>

namespace transfer {

/// A byte that tells whether it begins with a list that is not looked into, the length as 32 bits,
/// a list of item identifiers with its terminator.
struct persisted_list {
    std::uint8_t has_head = 0;
    std::vector<std::byte> bytes;
};

/// What is persisted, in this order. The number of items stands before them as 32 bits, and before
/// each item its length, as 32 bits too.
struct persisted_selection {
    std::uint32_t owner = 0; ///< the handle of a window
    persisted_list root;     ///< the drive's absolute list
    persisted_list folder;   ///< from there to the folder whose items are selected
    std::vector<std::vector<std::byte>> items;
    std::uint32_t preferred_effect = 0; ///< 0 for none
};

/// Fills as much of the buffer as there is and answers how much that was.
using byte_source = std::function<std::size_t(std::span<std::byte>)>;

std::vector<std::byte> to_bytes(const persisted_selection& selection);

/// Reads just the bytes of a selection. Nothing for fewer bytes than are promised, and for lists
/// without an end. Takes no more memory than there are bytes, whatever they promise. Lets pass what
/// `source` throws.
std::optional<persisted_selection> read_selection(const byte_source& source);

} // namespace transfer
