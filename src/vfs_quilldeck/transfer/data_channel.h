#pragma once

#include "vfs_quilldeck/transfer/transfer_account.h"
#include "vfs_quilldeck/transfer/transfer_watch.h"

#include <curl/curl.h>

#include <cstddef>

struct ssl_st;

namespace vfs_quilldeck {

/// Keeps the data channel of a transfer busy, both ways.
///
/// Receiving, it takes large pieces. OpenSSL by itself asks the socket twice for each record of 16
/// KiB, and each call costs more than the record's decryption; reading ahead it asks once for many.
/// The control channel must not read ahead: libcurl waits at the socket for a reply that would lie
/// in OpenSSL's buffer already. So a socket is the data channel only if it goes to the port that
/// the server has just named for it.
///
/// Sending, it waits for room in the socket itself. libcurl waits for the platform's write event,
/// which comes only after a send was refused. Where the last piece just fitted and left too little
/// room for the next, libcurl sleeps for a whole second, unless a send of nothing is refused too,
/// as under Windows; under Wine it is not. And it hears from OpenSSL of each record that is sent:
/// libcurl's whole buffer takes minutes on a slow line, and to send it record by record would cost
/// all of libcurl's round, with several calls of the platform's sockets, for each.
///
/// An object belongs to one use of a handle and lives until `curl_easy_perform` has returned.
class data_channel {
public:
    /// Sets the callbacks on `handle`, and itself as its `CURLOPT_PRIVATE`. `watch` hears of all
    /// that moves, if there is one.
    data_channel(CURL* handle, const transfer_account& account, transfer_watch* watch = nullptr);
    data_channel(const data_channel&) = delete;
    data_channel& operator=(const data_channel&) = delete;
    /// Takes them away again, but for the one that closes sockets, which connections keep.
    ~data_channel();

private:
    static std::size_t hear_reply(char* line, std::size_t one, std::size_t count, void* self);
    static curl_socket_t open_socket(void* self, curlsocktype purpose, curl_sockaddr* address);
    static int close_socket(void* handle, curl_socket_t socket);
    static CURLcode tune_tls(CURL* handle, void* context, void* self);
    static void hear_record(int is_sent, int version, int type, const void* bytes,
                            std::size_t length, ssl_st* tls, void* watch);
    static int look_around(void* self, curl_off_t, curl_off_t received, curl_off_t,
                           curl_off_t sent);

    void await_room() const;

    CURL* const handle_;
    transfer_watch* const watch_;
    const bool reads_ahead_;
    /// That the server has named for the data channel to come; 0: none.
    int named_port_ = 0;
    /// The data channel's, from its opening to its closing; the number may be another's afterwards.
    curl_socket_t socket_ = CURL_SOCKET_BAD;
};

} // namespace vfs_quilldeck
