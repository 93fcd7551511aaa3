#include "utils/rendezvous.h"

namespace utils {

namespace {

class srw_guard {
public:
    explicit srw_guard(SRWLOCK& lock) noexcept : lock_(lock) { AcquireSRWLockExclusive(&lock_); }

    srw_guard(const srw_guard&) = delete;
    srw_guard& operator=(const srw_guard&) = delete;

    ~srw_guard() { ReleaseSRWLockExclusive(&lock_); }

private:
    SRWLOCK& lock_;
};

} // namespace

void rendezvous::reset() noexcept {
    const srw_guard guard(lock_);
    ready_ = false;
    done_ = false;
    ended_ = false;
}

void rendezvous::give() noexcept {
    const srw_guard guard(lock_);
    ready_ = true;
    WakeAllConditionVariable(&changed_);
    while (!done_) {
        SleepConditionVariableSRW(&changed_, &lock_, INFINITE, 0);
    }
    done_ = false;
}

void rendezvous::end() noexcept {
    const srw_guard guard(lock_);
    ended_ = true;
    WakeAllConditionVariable(&changed_);
}

void rendezvous::set_done() noexcept {
    const srw_guard guard(lock_);
    done_ = true;
    WakeAllConditionVariable(&changed_);
}

bool rendezvous::wait_ready() noexcept {
    const srw_guard guard(lock_);
    while (!ready_ && !ended_) {
        SleepConditionVariableSRW(&changed_, &lock_, INFINITE, 0);
    }
    const bool ready = ready_;
    ready_ = false;
    return ready;
}

} // namespace utils
