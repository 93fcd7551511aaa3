#include "failing_memory.h"

#include <atomic>
#include <cstdlib>
#include <new>

namespace support {

namespace {

constexpr int no_limit = -1;
/// All threads take from it.
std::atomic<int> allowed_allocations = no_limit;

} // namespace

failing_memory::failing_memory(int allowed) {
    allowed_allocations = allowed;
}

failing_memory::~failing_memory() {
    allowed_allocations = no_limit;
}

} // namespace support

/// The sanitizer takes memory of its own forms of operator new for memory of another kind.
extern "C" const char* __asan_default_options() {
    return "alloc_dealloc_mismatch=0";
}

void* operator new(std::size_t size) {
    int allowed = support::allowed_allocations;
    while (allowed > 0 &&
           !support::allowed_allocations.compare_exchange_weak(allowed, allowed - 1)) {
    }
    if (allowed == 0) {
        throw std::bad_alloc();
    }
    if (void* const memory = std::malloc(size)) {
        return memory;
    }
    throw std::bad_alloc();
}

void operator delete(void* memory) noexcept {
    std::free(memory);
}

void operator delete(void* memory, std::size_t) noexcept {
    std::free(memory);
}
