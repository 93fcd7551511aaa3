#include "shell_items/file_list_block.h"

#include <algorithm>
#include <cstdint>
#include <cstring>

namespace shell {

namespace {

/// A `DROPFILES`: where the list begins, a point, whether that is one of the window's frame, and
/// whether the paths are in UTF-16.
constexpr std::size_t header_size = 20;
constexpr std::size_t list_offset = 0;
constexpr std::size_t wide_offset = 16;

std::uint32_t read_field(std::span<const std::byte> block, std::size_t offset) noexcept {
    std::uint32_t value = 0;
    std::memcpy(&value, block.data() + offset, sizeof value);
    return value;
}

} // namespace

std::optional<std::size_t> count_of_paths(std::span<const std::byte> block) noexcept {
    if (block.size() < header_size || read_field(block, list_offset) > block.size()) {
        return std::nullopt;
    }
    const auto list = block.subspan(read_field(block, list_offset));
    const std::size_t unit = read_field(block, wide_offset) != 0 ? 2 : 1;
    // Each path has a terminator, and the list is ended by a path of no length.
    std::size_t count = 0;
    bool at_path = true;
    for (std::size_t at = 0; at + unit <= list.size(); at += unit) {
        const bool terminator = std::ranges::all_of(
            list.subspan(at, unit), [](std::byte byte) { return byte == std::byte{0}; });
        if (terminator && at_path) {
            return count;
        }
        count += terminator ? 1 : 0;
        at_path = terminator;
    }
    return std::nullopt;
}

} // namespace shell
