#include "shell_items/id_list_bytes.h"

#include <cstring>

namespace shell {

namespace {

using size_field = std::uint16_t;

size_field read_size(const std::byte* entry) noexcept {
    size_field size = 0;
    std::memcpy(&size, entry, sizeof(size));
    return size;
}

} // namespace

std::uint16_t entry_size(const std::byte* entry) noexcept {
    const size_field size = read_size(entry);
    return size < sizeof(size) ? size_field{0} : size;
}

std::span<const std::byte> entries_of(const void* list) noexcept {
    if (!list) {
        return {};
    }
    const auto* const begin = static_cast<const std::byte*>(list);
    const std::byte* end = begin;
    while (const std::size_t size = entry_size(end)) {
        end += size;
    }
    return {begin, end};
}

std::span<const std::byte> first_entry_of(const void* list) noexcept {
    if (!list) {
        return {};
    }
    const auto* const entry = static_cast<const std::byte*>(list);
    return {entry, entry_size(entry)};
}

std::span<const std::byte> last_entry_of(const void* list) noexcept {
    std::span<const std::byte> last;
    if (const auto* entry = static_cast<const std::byte*>(list)) {
        while (const std::size_t size = entry_size(entry)) {
            last = {entry, size};
            entry += size;
        }
    }
    return last;
}

bool holds_whole_list(std::span<const std::byte> bytes) noexcept {
    while (bytes.size() >= sizeof(size_field)) {
        const size_field size = read_size(bytes.data());
        if (size == 0) {
            return true;
        }
        if (size < sizeof(size_field) || size > bytes.size()) {
            return false;
        }
        bytes = bytes.subspan(size);
    }
    return false;
}

} // namespace shell
