/// Owners of what data objects hand around.
#pragma once

#include "com/guard.h"
#include "utils/unique_handle.h"

#include <objidl.h>

#include <cstddef>
#include <span>
#include <utility>

namespace com {

struct global_block_traits {
    using pointer = HGLOBAL;

    static pointer none() noexcept { return nullptr; }

    static void close(pointer value) noexcept { ::GlobalFree(value); }
};

/// Owns a block of global memory.
using unique_global = utils::unique_resource<global_block_traits>;

/// A new block. `flags` are those of GlobalAlloc. Throws E_OUTOFMEMORY.
inline unique_global make_global(std::size_t size, UINT flags) {
    unique_global block(::GlobalAlloc(flags, size));
    if (!block) {
        throw status_exception(E_OUTOFMEMORY);
    }
    return block;
}

/// Keeps a block in its place, where it can be read and written. The block belongs to somebody
/// else.
class global_lock {
public:
    /// Throws E_OUTOFMEMORY for what cannot be locked, null and blocks that were freed included.
    explicit global_lock(HGLOBAL block) : block_(block), bytes_(::GlobalLock(block)) {
        if (bytes_ == nullptr) {
            throw status_exception(E_OUTOFMEMORY);
        }
    }

    global_lock(const global_lock&) = delete;
    global_lock& operator=(const global_lock&) = delete;

    ~global_lock() { ::GlobalUnlock(block_); }

    /// The whole block, which may be longer than what was asked for when it was made.
    std::span<std::byte> bytes() const noexcept {
        return {static_cast<std::byte*>(bytes_), ::GlobalSize(block_)};
    }

private:
    HGLOBAL block_;
    void* bytes_;
};

/// Owns what a STGMEDIUM holds.
class medium {
public:
    medium() noexcept = default;

    /// Takes over what `value` holds.
    explicit medium(const STGMEDIUM& value) noexcept : value_(value) {}

    explicit medium(unique_global block) noexcept {
        value_.tymed = TYMED_HGLOBAL;
        value_.hGlobal = block.release();
    }

    medium(medium&& other) noexcept : value_(other.release()) {}

    medium& operator=(medium&& other) noexcept {
        if (this != &other) {
            reset();
            value_ = other.release();
        }
        return *this;
    }

    ~medium() { reset(); }

    const STGMEDIUM& get() const noexcept { return value_; }

    explicit operator bool() const noexcept { return value_.tymed != TYMED_NULL; }

    /// For calls that fill a medium in; what was held is released.
    STGMEDIUM* put() noexcept {
        reset();
        return &value_;
    }

    /// Gives the content to the caller and is empty afterwards.
    STGMEDIUM release() noexcept { return std::exchange(value_, STGMEDIUM{}); }

    void reset() noexcept {
        STGMEDIUM old = release();
        ::ReleaseStgMedium(&old);
    }

private:
    STGMEDIUM value_{};
};

} // namespace com
