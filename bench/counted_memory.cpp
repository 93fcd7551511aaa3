#include "counted_memory.h"

#include <atomic>
#include <cstddef>
#include <cstdlib>
#include <new>

namespace {

std::atomic<std::int64_t> held;

/// Stands before each block, and keeps it aligned.
struct alignas(std::max_align_t) block_head {
    std::size_t size;
};

static_assert(sizeof(block_head) == 16);

} // namespace

namespace bench {

std::int64_t held_bytes() {
    return held;
}

} // namespace bench

void* operator new(std::size_t size) {
    auto* const head = static_cast<block_head*>(std::malloc(sizeof(block_head) + size));
    if (head == nullptr) {
        throw std::bad_alloc();
    }
    head->size = sizeof(block_head) + size;
    held += static_cast<std::int64_t>(head->size);
    return head + 1;
}

void operator delete(void* block) noexcept {
    if (block == nullptr) {
        return;
    }
    auto* const head = static_cast<block_head*>(block) - 1;
    held -= static_cast<std::int64_t>(head->size);
    std::free(head);
}

void operator delete(void* block, std::size_t) noexcept {
    operator delete(block);
}
