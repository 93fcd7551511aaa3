#pragma once

#include <windows.h>

#include <functional>

namespace utils {

/// A body of work that runs on a thread of the platform's pool. Transfers of small files come and
/// go faster than threads are made. While it runs, the platform holds a reference on the module
/// that contains this code. Nothing that the body throws passes the thread's top.
class pool_thread {
public:
    /// Starts `body`, which may block for hours. Throws `system_error_exception`.
    explicit pool_thread(std::function<void()> body);
    pool_thread(const pool_thread&) = delete;
    pool_thread& operator=(const pool_thread&) = delete;
    /// Joins.
    ~pool_thread();

    /// Waits without limit until the body has returned.
    void join() noexcept;

private:
    static void CALLBACK run(PTP_CALLBACK_INSTANCE, void* self, PTP_WORK);

    std::function<void()> body_;
    PTP_WORK work_;
};

/// Runs `body` once on a thread of the platform's pool and does not wait for it. It may block for
/// long, and is destroyed on that thread. The platform holds a reference on the module that
/// contains this code until it has ended; nothing that it throws passes the thread's top. Throws
/// `system_error_exception` when the pool takes no work.
void start_pool_work(std::function<void()> body);

} // namespace utils
