#include "serializer/arena.h"

namespace serializer {

namespace {

constexpr std::size_t chunk_size = 32768;

/// What is larger has a chunk of its own, so that little of the usual ones is wasted.
constexpr std::size_t largest_shared = chunk_size / 8;

} // namespace

void* arena::allocate_elsewhere(std::size_t size, std::size_t alignment) {
    if (size > largest_shared || alignment > alignof(std::max_align_t)) {
        std::size_t room = size + alignment;
        void* place = add_chunk(room);
        return std::align(alignment, size, place, room);
    }
    free_ = add_chunk(chunk_size) + size;
    left_ = chunk_size - size;
    return free_ - size;
}

std::byte* arena::add_chunk(std::size_t size) {
    return chunks_.emplace_back(std::make_unique_for_overwrite<std::byte[]>(size)).get();
}

} // namespace serializer
