#pragma once

namespace module {

/// What the C++ run-time library keeps for each thread, and how it makes its own static objects.
/// By itself it builds both on the compiler's library of POSIX threads, which at its first use in a
/// thread takes a thread-local slot and two handles, and gives them back when the thread ends, but
/// not when a DLL is unloaded before that. Here they stand on what the platform cleans up.
class thread_state {
public:
    /// Before any code that may throw. False when the process has no slot left.
    static bool create() noexcept;
    /// Frees the state of all threads; no exception may be on its way.
    static void destroy() noexcept;
};

} // namespace module
