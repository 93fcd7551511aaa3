#pragma once

#include <windows.h>

namespace utils {

/// A lock between the threads of one process, for `std::lock_guard`. Recursive. It allocates
/// nothing, so that an object of which there are many can have one of its own.
class critical_section {
public:
    critical_section() noexcept {
        ::InitializeCriticalSectionEx(&section_, 0, CRITICAL_SECTION_NO_DEBUG_INFO);
    }

    critical_section(const critical_section&) = delete;
    critical_section& operator=(const critical_section&) = delete;

    ~critical_section() { ::DeleteCriticalSection(&section_); }

    void lock() noexcept { ::EnterCriticalSection(&section_); }

    void unlock() noexcept { ::LeaveCriticalSection(&section_); }

private:
    CRITICAL_SECTION section_;
};

} // namespace utils
