#pragma once

#include <windows.h>

namespace companions {

/// Frees what the platform gave out of its local heap.
struct local_free {
    void operator()(void* memory) const noexcept { LocalFree(memory); }
};

} // namespace companions
