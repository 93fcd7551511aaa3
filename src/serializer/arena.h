#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <type_traits>
#include <utility>
#include <vector>

namespace serializer {

/// Memory that is taken piece by piece and given back all at once, when the arena goes. For one
/// thread at a time.
///
/// The chunks are all of one size, which heaps keep for the next arena. Those of
/// `std::pmr::monotonic_buffer_resource` grow until they come fresh from the system, and then the
/// page faults cost more than the reading of a settings file.
class arena {
public:
    arena() = default;
    arena(const arena&) = delete;
    arena& operator=(const arena&) = delete;

    void* allocate(std::size_t size, std::size_t alignment) {
        const std::size_t padding =
            (alignment - reinterpret_cast<std::uintptr_t>(free_)) & (alignment - 1);
        if (size + padding > left_) {
            return allocate_elsewhere(size, alignment);
        }
        free_ += padding + size;
        left_ -= padding + size;
        return free_ - size;
    }

private:
    /// From another chunk.
    void* allocate_elsewhere(std::size_t size, std::size_t alignment);

    /// The beginning of a new chunk.
    std::byte* add_chunk(std::size_t size);

    std::vector<std::unique_ptr<std::byte[]>> chunks_;
    /// What is left of the last chunk of the usual size.
    std::byte* free_ = nullptr;
    std::size_t left_ = 0;
};

/// Takes memory from an arena, which has to outlive what is made in it, or from the heap. It goes
/// on to what a container holds, but not to a copy: that is on the heap. A memory resource of the
/// library does the same by a virtual call for each piece, of which a setting has four.
template <class T>
class arena_allocator {
public:
    using value_type = T;

    arena_allocator() = default;

    arena_allocator(arena* from) noexcept : from_(from) {}

    template <class U>
    arena_allocator(const arena_allocator<U>& other) noexcept : from_(other.from()) {}

    T* allocate(std::size_t count) {
        // No text or tree is so large that the product could pass its type.
        return from_ == nullptr ? std::allocator<T>().allocate(count)
                                : static_cast<T*>(from_->allocate(count * sizeof(T), alignof(T)));
    }

    void deallocate(T* place, std::size_t count) noexcept {
        if (from_ == nullptr) {
            std::allocator<T>().deallocate(place, count);
        }
    }

    template <class U, class... Arguments>
    void construct(U* place, Arguments&&... arguments) {
        std::uninitialized_construct_using_allocator(place, *this,
                                                     std::forward<Arguments>(arguments)...);
    }

    arena_allocator select_on_container_copy_construction() const noexcept { return {}; }

    arena* from() const noexcept { return from_; }

    template <class U>
    bool operator==(const arena_allocator<U>& other) const noexcept {
        return from_ == other.from();
    }

private:
    arena* from_ = nullptr;
};

} // namespace serializer
