/// The block of the format `CF_HDROP`. Plain code, without the platform's headers.
#pragma once

#include <cstddef>
#include <optional>
#include <span>

namespace shell {

/// How many paths the block holds; nothing where their list does not end inside of it. The platform
/// reads a list to its end, wherever that is, and counts one path in an empty list.
std::optional<std::size_t> count_of_paths(std::span<const std::byte> block) noexcept;

} // namespace shell
