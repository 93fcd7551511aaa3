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

void rendezvous::set(std::atomic<bool>& event) noexcept {
    event = true;
    // Either this side sees that the other one is about to sleep, or that one sees the event.
    if (sleeping_ != 0) {
        const std::lock_guard guard(lock_);
        WakeAllConditionVariable(&changed_);
    }
}

bool rendezvous::wait(std::atomic<bool>& event, bool or_end, int& looks) noexcept {
    const auto is_over = [&] {
        return event || (or_end && ended_);
    };
    look_for_a_moment(looks, is_over);
    if (!is_over()) {
        const std::lock_guard guard(lock_);
        ++sleeping_;
        while (!is_over()) {
            lock_.wait(changed_);
        }
        --sleeping_;
    }
    return event.exchange(false);
}

void rendezvous::give() noexcept {
    set(ready_);
    wait(done_, false, giver_looks_);
}

void rendezvous::end() noexcept {
    set(ended_);
}

void rendezvous::set_done() noexcept {
    set(done_);
}

bool rendezvous::wait_ready() noexcept {
    return wait(ready_, true, taker_looks_);
}

} // namespace utils
