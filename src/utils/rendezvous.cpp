#include "utils/rendezvous.h"

#include <algorithm>
#include <mutex>

namespace utils {

namespace {

/// How often a waiting side looks before it sleeps. The bounds are some 10 and some 150 us.
constexpr int fewest_looks = 256;
constexpr int most_looks = 4096;

/// Looks for a moment before the thread is put to sleep: amid a burst of data the other side needs
/// a few microseconds, and to be woken takes longer than that. `looks` adapts, so that waiting for
/// a slow line does not burn a processor.
template <class Condition>
void look_for_a_moment(int& looks, Condition holds) noexcept {
    for (int look = 0; look < looks; ++look) {
        if (holds()) {
            looks = std::min(looks * 2, most_looks);
            return;
        }
        YieldProcessor();
    }
    looks = std::max(looks / 2, fewest_looks);
}

} // namespace

void rendezvous::reset() noexcept {
    const std::lock_guard guard(lock_);
    ready_ = false;
    done_ = false;
    ended_ = false;
    giver_looks_ = most_looks;
    taker_looks_ = most_looks;
}

void rendezvous::give() noexcept {
    {
        const std::lock_guard guard(lock_);
        ready_ = true;
        WakeAllConditionVariable(&changed_);
    }
    look_for_a_moment(giver_looks_, [this] { return done_.load(); });
    const std::lock_guard guard(lock_);
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
    look_for_a_moment(taker_looks_, [this] { return ready_ || ended_; });
    const std::lock_guard guard(lock_);
    while (!ready_ && !ended_) {
        lock_.wait(changed_);
    }
    const bool ready = ready_;
    ready_ = false;
    return ready;
}

} // namespace utils
