#pragma once

#include <windows.h>

namespace utils {

/// A critical section between the threads of one process, for `std::lock_guard`. Not recursive. It
/// is one word that needs no destruction, so that an object of which there are many can have its
/// own: deleting the platform's `CRITICAL_SECTION` may cost a call of the system.
class slim_lock {
public:
    slim_lock() = default;
    slim_lock(const slim_lock&) = delete;
    slim_lock& operator=(const slim_lock&) = delete;

    void lock() noexcept { ::AcquireSRWLockExclusive(&lock_); }

    void unlock() noexcept { ::ReleaseSRWLockExclusive(&lock_); }

    /// Lets go while it waits for `condition` to be signalled, and holds again afterwards.
    void wait(CONDITION_VARIABLE& condition) noexcept {
        ::SleepConditionVariableSRW(&condition, &lock_, INFINITE, 0);
    }

private:
    SRWLOCK lock_ = SRWLOCK_INIT;
};

} // namespace utils
