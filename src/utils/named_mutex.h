#pragma once

#include <string>

namespace utils {

/// A named mutex between processes; every failure is a `system_error_exception`, also that of the
/// destructor: an owner whose own destructor may not raise catches it there. It is locked by a
/// `mutex_hold`. One object belongs to one thread at a time; the platform counts the recursive
/// locks of a thread.
class named_mutex {
public:
    /// Creates the mutex or joins the existing one of that name.
    explicit named_mutex(const std::wstring& name);
    named_mutex(const named_mutex&) = delete;
    named_mutex& operator=(const named_mutex&) = delete;
    /// Raises when the handle cannot be closed, unless another failure is on its way already.
    virtual ~named_mutex() noexcept(false);

    /// Waits without limit. A mutex whose owner died counts as locked: what it guards may be half
    /// written, which its readers must expect.
    void lock();
    void unlock();

private:
    void* m_win_mutex;
};

/// Holds a mutex for as long as it lives. A mutex that cannot be let go at the end is left to the
/// end of its thread, at which the platform lets it go: a destructor cannot tell, and raising there
/// would end the program that we are a guest of.
class mutex_hold {
public:
    explicit mutex_hold(named_mutex& mutex) : mutex_(mutex) { mutex.lock(); }

    mutex_hold(const mutex_hold&) = delete;
    mutex_hold& operator=(const mutex_hold&) = delete;
    ~mutex_hold();

private:
    named_mutex& mutex_;
};

} // namespace utils
