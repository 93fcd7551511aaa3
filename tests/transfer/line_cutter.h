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

    /// The next transfer that has moved `bytes` loses its connection.
    void cut_after(curl_off_t bytes);
    /// Breaks the connection that was opened last, between two calls of its user.
    void cut_now();

    /// Breaks that have happened.
    int cuts() const { return cuts_; }

    /// Sockets that were opened.
    int sockets() const { return sockets_; }

private:
    static int note_socket(void* cutter, curl_socket_t socket, curlsocktype purpose);
    static int note_progress(void* cutter, curl_off_t, curl_off_t received, curl_off_t,
                             curl_off_t sent);

    CURL* handle_ = nullptr;
    curl_socket_t socket_ = CURL_SOCKET_BAD;
    curl_off_t limit_ = -1;
    int cuts_ = 0;
    int sockets_ = 0;
};

} // namespace transfer_test
