#pragma once

#include "vfs_quilldeck/transfer_account.h"

#include <curl/curl.h>

namespace vfs_quilldeck {

/// Keeps the data channel of a transfer busy, both ways.
///
/// Receiving, it takes large pieces. OpenSSL by itself asks the socket twice for each record of 16
/// KiB, and each call costs more than the record's decryption; reading ahead it asks once for many.
/// The control channel must not read ahead: libcurl waits at the socket for a reply that would lie
/// in OpenSSL's buffer already.
///
/// Sending, it waits for room in the socket itself. libcurl waits for the platform's event, which
/// comes only after a send was refused; a send that just fitted leaves a socket that is full for
/// select() and yet brings no event under some platforms, and libcurl sleeps for a whole second.
///
/// An object belongs to one use of a handle and lives until `curl_easy_perform` has returned.
class data_channel {
public:
    /// Sets the callbacks on `handle`.
    data_channel(CURL* handle, const transfer_account& account);
    data_channel(const data_channel&) = delete;
    data_channel& operator=(const data_channel&) = delete;
    /// Takes the callbacks away again.
    ~data_channel();

private:
    static curl_socket_t open_socket(void* self, curlsocktype purpose, curl_sockaddr* address);
    static CURLcode tune_tls(CURL* handle, void* context, void* self);
    static int await_room(void* self, curl_off_t, curl_off_t, curl_off_t, curl_off_t sent);

    CURL* const handle_;
    int control_port_;
    bool reads_ahead_;
    /// The socket that was opened last is a data channel's.
    bool is_data_ = false;
    curl_socket_t socket_ = CURL_SOCKET_BAD;
};

} // namespace vfs_quilldeck
