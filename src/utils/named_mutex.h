#pragma once

#include <string>

namespace utils {

/// A named mutex between processes; every failure is a `system_error_exception`. It may be locked
/// by `std::lock_guard`. One object belongs to one thread at a time; the platform counts the
/// recursive locks of a thread.
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

} // namespace utils
