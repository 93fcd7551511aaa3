#pragma once

#include <curl/curl.h>

#include <atomic>
#include <chrono>
#include <cstddef>
#include <cstdint>

namespace vfs_quilldeck {

/// Seconds in which no byte moves after which a transfer is given up.
inline constexpr long transfer_timeout_seconds = 60;

/// Lets a running transfer go on as long as bytes move. Of libcurl's limits only the one on the
/// transfer as a whole covers every phase, from the connecting to the server's last word; so that
/// one is moved along whenever bytes have passed the socket. A buffer that was handed over would
/// tell too little: on a slow line it takes minutes to be sent.
class transfer_watch {
public:
    transfer_watch() = default;
    transfer_watch(const transfer_watch&) = delete;
    transfer_watch& operator=(const transfer_watch&) = delete;

    /// Before a worker is started.
    void reset() noexcept { given_up_ = false; }

    /// Before a transfer on `handle`, which has the limit of a transfer at its beginning.
    void start(CURL* handle) noexcept;

    /// The caller had the buffer: however long he took, the line's time begins anew.
    void handed_over() noexcept { extend(); }

    /// What libcurl reports at least once a second: all that has moved. False: break off.
    bool goes_on(curl_off_t moved) noexcept;

    /// So many bytes more went to the socket. libcurl reports a buffer when it has all been sent,
    /// after minutes on a slow line.
    void sent(std::size_t bytes) noexcept;

    /// Breaks the transfer off. Any thread.
    void give_up() noexcept { given_up_ = true; }

    bool is_given_up() const noexcept { return given_up_; }

    /// After a transfer: how long its line took for `bytes` on average, in milliseconds.
    std::int64_t milliseconds_for(std::int64_t bytes) const noexcept;

private:
    using clock = std::chrono::steady_clock;

    void extend() noexcept;

    CURL* handle_ = nullptr;
    std::atomic<bool> given_up_ = false;
    clock::time_point started_;
    clock::time_point last_moved_;
    curl_off_t moved_ = 0;
    curl_off_t sent_ = 0;
};

} // namespace vfs_quilldeck
