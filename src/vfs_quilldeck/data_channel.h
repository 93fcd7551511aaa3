#pragma once

#include "vfs_quilldeck/transfer_account.h"

#include <curl/curl.h>

namespace vfs_quilldeck {

/// Lets the data channel of a transfer receive in large pieces. OpenSSL by itself asks the socket
/// twice for each record of 16 KiB, and each call costs more than the record's decryption; reading
/// ahead it asks once for many. The control channel must not read ahead: libcurl waits at the
/// socket for a reply that would lie in OpenSSL's buffer already.
///
/// An object belongs to one use of a handle and lives until `curl_easy_perform` has returned.
class data_channel {
public:
    /// Sets the callbacks on `handle`.
    data_channel(CURL* handle, const transfer_account& account);
    data_channel(const data_channel&) = delete;
    data_channel& operator=(const data_channel&) = delete;

private:
    static curl_socket_t open_socket(void* self, curlsocktype purpose, curl_sockaddr* address);
    static CURLcode tune_tls(CURL* handle, void* context, void* self);

    int control_port_;
    bool reads_ahead_;
    /// The socket that was opened last is a data channel's.
    bool is_data_ = false;
};

} // namespace vfs_quilldeck
