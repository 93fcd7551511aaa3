#pragma once

namespace module {

/// The heap from which everything in this DLL is allocated that uses the C and C++ languages'
/// functions. The libraries that are linked in, those of the compiler above all, keep memory that
/// they never free, which would stay in the host at each unload; this heap takes it with it.
class private_heap {
public:
    /// Before the first allocation: before anything else of the DLL runs. False without memory.
    static bool create() noexcept;
    /// After the last use: nothing else of the DLL runs any more.
    static void destroy() noexcept;
};

} // namespace module
