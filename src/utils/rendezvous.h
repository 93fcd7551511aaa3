#pragma once

#include "utils/slim_lock.h"

#include <windows.h>

#include <atomic>

namespace utils {

/// Two auto-reset events by which two threads of one process hand something to and fro: `ready` is
/// set by the giver, `done` by the taker. They live in user mode: a hand-over is made for every few
/// kilobytes of a transfer, and a kernel event costs a call of the system (under some platforms a
/// call of another process) for each set and each wait.
class rendezvous {
public:
    rendezvous() = default;
    rendezvous(const rendezvous&) = delete;
    rendezvous& operator=(const rendezvous&) = delete;

    /// Resets both events for a new giver.
    void reset() noexcept;

    /// The giver: sets `ready` and waits without limit for `done`.
    void give() noexcept;
    /// The giver, as the last thing that it does here: nothing more will be given.
    void end() noexcept;

    /// The taker: sets `done`.
    void set_done() noexcept;
    /// The taker: waits without limit for `ready`, true, or for the giver's end, false.
    bool wait_ready() noexcept;

private:
    /// Sets `event` and wakes who sleeps. Who is awake is not kept from seeing it: a lock that is
    /// held for a moment only would put the other side to sleep just when it is looking.
    void set(std::atomic<bool>& event) noexcept;
    /// Takes `event`, true, or sees the end where that counts, false.
    bool wait(std::atomic<bool>& event, bool or_end, int& looks) noexcept;

    slim_lock lock_;
    CONDITION_VARIABLE changed_ = CONDITION_VARIABLE_INIT;
    std::atomic<bool> ready_ = false;
    std::atomic<bool> done_ = false;
    std::atomic<bool> ended_ = false;
    /// The sides that sleep, or are about to.
    std::atomic<int> sleeping_ = 0;
    /// Each side's own.
    int giver_looks_ = 0;
    int taker_looks_ = 0;
};

} // namespace utils
