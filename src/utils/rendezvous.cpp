#include "utils/rendezvous.h"

#include <mutex>

namespace utils {

void rendezvous::reset() noexcept {
    const std::lock_guard guard(lock_);
    ready_ = false;
    done_ = false;
    ended_ = false;
}

void rendezvous::give() noexcept {
    const std::lock_guard guard(lock_);
    ready_ = true;
    WakeAllConditionVariable(&changed_);
    while (!done_) {
        lock_.wait(changed_);
    }
    done_ = false;
}

void rendezvous::end() noexcept {
    const std::lock_guard guard(lock_);
    ended_ = true;
    WakeAllConditionVariable(&changed_);
}

void rendezvous::set_done() noexcept {
    const std::lock_guard guard(lock_);
    done_ = true;
    WakeAllConditionVariable(&changed_);
}

bool rendezvous::wait_ready() noexcept {
    const std::lock_guard guard(lock_);
    while (!ready_ && !ended_) {
        lock_.wait(changed_);
    }
    const bool ready = ready_;
    ready_ = false;
    return ready;
}

} // namespace utils
