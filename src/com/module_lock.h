/// What keeps this module in its process.
#pragma once

#include <atomic>

namespace com {

/// Counts the living COM objects of this module, and the locks that clients take on it through
/// class factories. At 0 the module may be unloaded. Safe on any thread.
class module_lock {
public:
    static long add() noexcept { return count_.fetch_add(1) + 1; }

    static long release() noexcept { return count_.fetch_sub(1) - 1; }

    static long count() noexcept { return count_.load(); }

private:
    inline static std::atomic<long> count_ = 0;
};

} // namespace com
