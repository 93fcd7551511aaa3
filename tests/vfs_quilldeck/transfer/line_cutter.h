#pragma once

#include <curl/curl.h>
#include <winsock2.h>

namespace transfer_test {

/// Breaks the data connections of the transfers that run on the pool's first handle, whichever
/// server they go to. The pool never resets its handles, so options that a test sets stay in
/// effect below those of the streams. While it lives, one stream may run at a time.
class line_cutter {
public:
    line_cutter();
    line_cutter(const line_cutter&) = delete;
    line_cutter& operator=(const line_cutter&) = delete;
    ~line_cutter();

    /// Breaks the line once `bytes` more of content have passed, above 0.
    void cut_after(curl_off_t bytes) { left_ = bytes; }

    /// Breaks the connection that was opened last, between two calls of its user.
    void cut_now();

private:
    void note(curl_off_t bytes);

    CURL* handle_ = nullptr;
    curl_socket_t socket_ = CURL_SOCKET_BAD;
    /// Bytes that may still pass; below 0 all may.
    curl_off_t left_ = -1;
};

} // namespace transfer_test
