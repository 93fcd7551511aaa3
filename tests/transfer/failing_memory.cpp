#include "failing_memory.h"

#include <cstdlib>
#include <new>

namespace transfer_test {

thread_local int allocations_until_failure = 0;

} // namespace transfer_test

void* operator new(std::size_t size) {
    int& left = transfer_test::allocations_until_failure;
    const bool armed = left > 0;
    left -= left > 0 ? 1 : 0;
    void* const block = left == 0 && armed ? nullptr : std::malloc(size);
    if (block == nullptr) {
        left = -1;
        throw std::bad_alloc();
    }
    return block;
}

void operator delete(void* block) noexcept {
    std::free(block);
}

void operator delete(void* block, std::size_t) noexcept {
    std::free(block);
}
