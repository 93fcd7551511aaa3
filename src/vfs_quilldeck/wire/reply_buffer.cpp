#include "vfs_quilldeck/wire/reply_buffer.h"

#include <algorithm>
#include <cstring>

namespace vfs_quilldeck {

bool reply_buffer::reserve(std::size_t size) noexcept {
    if (size <= capacity_) {
        return true;
    }
    auto* grown = static_cast<char*>(std::realloc(bytes_.get(), size));
    if (grown == nullptr) {
        return false;
    }
    static_cast<void>(bytes_.release());
    bytes_.reset(grown);
    capacity_ = size;
    return true;
}

bool reply_buffer::append(const char* data, std::size_t size) noexcept {
    const auto used = static_cast<std::size_t>(size_);
    // Twice the room each time: a listing of many megabytes comes in pieces of 16 KiB.
    if (size > capacity_ - used && !reserve(std::max(used + size, capacity_ * 2))) {
        return false;
    }
    if (size != 0) {
        std::memcpy(bytes_.get() + used, data, size);
    }
    size_ += static_cast<std::int64_t>(size);
    return true;
}

} // namespace vfs_quilldeck
