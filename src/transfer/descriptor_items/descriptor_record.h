/// The block of the format "FileGroupDescriptorW": a count of 32 bits and as many records, all
/// little-endian. Plain code, without the platform's headers.
#pragma once

#include <cstddef>
#include <cstdint>
#include <type_traits>

namespace transfer {

/// One item of the source.
struct descriptor_record {
    std::uint32_t flags; ///< which of the other fields are set
    std::uint8_t unused[32];
    std::uint32_t attributes; ///< valid with `has_attributes` in `flags`
    std::uint8_t times_and_size[32];
    char16_t name[260]; ///< a path below the selection, parted by backslashes, with a terminator
};

inline constexpr std::uint32_t has_attributes = 0x4;
inline constexpr std::uint32_t attribute_directory = 0x10;
inline constexpr std::size_t descriptor_count_size = 4;
inline constexpr std::size_t descriptor_record_size = 592;
inline constexpr std::size_t descriptor_name_size = 260;

static_assert(std::is_standard_layout_v<descriptor_record> &&
              std::is_trivially_copyable_v<descriptor_record>);
static_assert(sizeof(descriptor_record) == descriptor_record_size);
static_assert(offsetof(descriptor_record, flags) == 0);
static_assert(offsetof(descriptor_record, attributes) == 36);
static_assert(offsetof(descriptor_record, name) == 72);

} // namespace transfer
