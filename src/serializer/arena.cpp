#include "serializer/arena.h"

#include <cstdint>
#include <utility>

namespace serializer {

namespace {

constexpr std::size_t chunk_size = 32768;

/// What is larger has a chunk of its own, so that little of the usual ones is wasted.
constexpr std::size_t largest_shared = chunk_size / 8;

} // namespace

void* arena::do_allocate(std::size_t size, std::size_t alignment) {
    if (size > largest_shared || alignment > alignof(std::max_align_t)) {
        void* place = add_chunk(size + alignment);
        std::size_t room = size + alignment;
        return std::align(alignment, size, place, room);
    }
    std::size_t padding = (alignment - reinterpret_cast<std::uintptr_t>(free_)) & (alignment - 1);
    if (size + padding > left_) {
        free_ = add_chunk(chunk_size);
        left_ = chunk_size;
        padding = 0;
    }
    free_ += padding + size;
    left_ -= padding + size;
    return free_ - size;
}

void arena::do_deallocate(void*, std::size_t, std::size_t) {}

bool arena::do_is_equal(const memory_resource& other) const noexcept {
    return this == &other;
}

std::byte* arena::add_chunk(std::size_t size) {
    return chunks_.emplace_back(std::make_unique_for_overwrite<std::byte[]>(size)).get();
}

} // namespace serializer
