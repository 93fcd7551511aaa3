#include "failing_memory.h"

#include <cstdlib>
#include <new>

namespace fuzz {

namespace {

constexpr int no_limit = -1;
int allowed_allocations = no_limit;

} // namespace

failing_memory::failing_memory(int allowed) {
    allowed_allocations = allowed;
}

failing_memory::~failing_memory() {
    allowed_allocations = no_limit;
}

} // namespace fuzz

/// The sanitizer takes memory of its own forms of operator new for memory of another kind.
extern "C" const char* __asan_default_options() {
    return "alloc_dealloc_mismatch=0";
}

void* operator new(std::size_t size) {
    if (fuzz::allowed_allocations == 0) {
        throw std::bad_alloc();
    }
    if (fuzz::allowed_allocations > 0) {
        --fuzz::allowed_allocations;
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
