/// Raw item identifier lists, as the shell hands them around: entries, each of which begins with
/// its own size in bytes as 16 bits, and behind them a size of 0. Entries need not be aligned.
/// Nothing here reads past the end that a list gives itself.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

namespace shell {

/// This program ends its lists with one zero byte more than the shell needs.
inline constexpr std::size_t terminator_size = 3;

/// The size of the entry at `entry`, 0 at the end of the list. An entry that is too short for its
/// own size ends the list too.
std::uint16_t entry_size(const std::byte* entry) noexcept;

/// The bytes of all entries of `list`, without a terminator; null has none.
std::span<const std::byte> entries_of(const void* list) noexcept;

/// The first entry of `list`; empty if there is none.
std::span<const std::byte> first_entry_of(const void* list) noexcept;

/// The last entry of `list`; empty if there is none.
std::span<const std::byte> last_entry_of(const void* list) noexcept;

/// Whether a list with its terminator ends inside of `bytes`, which come from outside.
bool holds_whole_list(std::span<const std::byte> bytes) noexcept;

} // namespace shell
