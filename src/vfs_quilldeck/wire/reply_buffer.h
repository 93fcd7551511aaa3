#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <string_view>

namespace vfs_quilldeck {

/// The growing block in which the bytes of one reply are collected. Moves only.
class reply_buffer {
public:
    /// Makes room for `size` bytes in all; false, with nothing changed, if memory is short.
    bool reserve(std::size_t size) noexcept;

    /// Puts `size` bytes behind what is there; false, with nothing changed, if memory is short.
    bool append(const char* data, std::size_t size) noexcept;

    const char* data() const noexcept { return bytes_.get(); }

    std::int64_t size() const noexcept { return size_; }

    std::string_view view() const noexcept {
        return {bytes_.get(), static_cast<std::size_t>(size_)};
    }

private:
    struct free_bytes {
        void operator()(char* bytes) const noexcept { std::free(bytes); }
    };

    std::unique_ptr<char, free_bytes> bytes_;
    std::int64_t size_ = 0;
    std::size_t capacity_ = 0;
};

/// The bytes of a reply as they are handed on.
using shared_reply = std::shared_ptr<const reply_buffer>;

} // namespace vfs_quilldeck
