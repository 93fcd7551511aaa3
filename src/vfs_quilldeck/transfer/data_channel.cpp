#include "vfs_quilldeck/transfer/data_channel.h"

#include <openssl/ssl.h>

#include <winsock2.h>

#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <memory>

namespace vfs_quilldeck {

namespace {

constexpr std::size_t read_ahead_bytes = std::size_t{256} * 1024;

/// Less than this always fits, and a small file is spared the question for room.
constexpr curl_off_t smallest_socket_buffer = 32'000;

/// libcurl looks at the control channel in between.
constexpr timeval longest_wait_for_room{0, 500'000};

struct free_curl_text {
    void operator()(char* text) const { curl_free(text); }
};

int port_of(const transfer_account& account) {
    const std::unique_ptr<CURLU, decltype(&curl_url_cleanup)> url(curl_url(), &curl_url_cleanup);
    char* text = nullptr;
    if (!url || curl_url_set(url.get(), CURLUPART_URL, account.host.c_str(), 0) != CURLUE_OK ||
        curl_url_get(url.get(), CURLUPART_PORT, &text, CURLU_DEFAULT_PORT) != CURLUE_OK) {
        return 0;
    }
    const std::unique_ptr<char, free_curl_text> owner(text);
    return std::atoi(text);
}

/// The port stands at the same place in the addresses of both families.
int port_of(const curl_sockaddr& address) {
    sockaddr_in internet{};
    std::memcpy(&internet, &address.addr, sizeof(internet));
    return ntohs(internet.sin_port);
}

} // namespace

data_channel::data_channel(CURL* handle, const transfer_account& account,
                           const std::atomic<bool>* given_up)
    : handle_(handle), given_up_(given_up), control_port_(port_of(account)),
      // A limited transfer leaves data in OpenSSL's buffer and waits at the socket.
      reads_ahead_(account.download_speed_limit <= 0) {
    curl_easy_setopt(handle, CURLOPT_PRIVATE, this);
    curl_easy_setopt(handle, CURLOPT_OPENSOCKETFUNCTION, &data_channel::open_socket);
    curl_easy_setopt(handle, CURLOPT_OPENSOCKETDATA, this);
    // A connection keeps these two for life, and lives longer than this object.
    curl_easy_setopt(handle, CURLOPT_CLOSESOCKETFUNCTION, &data_channel::close_socket);
    curl_easy_setopt(handle, CURLOPT_CLOSESOCKETDATA, handle);
    curl_easy_setopt(handle, CURLOPT_SSL_CTX_FUNCTION, &data_channel::tune_tls);
    curl_easy_setopt(handle, CURLOPT_SSL_CTX_DATA, this);
    curl_easy_setopt(handle, CURLOPT_XFERINFOFUNCTION, &data_channel::look_around);
    curl_easy_setopt(handle, CURLOPT_XFERINFODATA, this);
    curl_easy_setopt(handle, CURLOPT_NOPROGRESS, 0L);
}

data_channel::~data_channel() {
    curl_easy_setopt(handle_, CURLOPT_NOPROGRESS, 1L);
    curl_easy_setopt(handle_, CURLOPT_XFERINFOFUNCTION, nullptr);
    curl_easy_setopt(handle_, CURLOPT_SSL_CTX_FUNCTION, nullptr);
    curl_easy_setopt(handle_, CURLOPT_OPENSOCKETFUNCTION, nullptr);
    curl_easy_setopt(handle_, CURLOPT_PRIVATE, nullptr);
}

curl_socket_t data_channel::open_socket(void* self, curlsocktype, curl_sockaddr* address) {
    auto& channel = *static_cast<data_channel*>(self);
    const SOCKET opened = socket(address->family, address->socktype, address->protocol);
    channel.socket_ = port_of(*address) != channel.control_port_ ? opened : CURL_SOCKET_BAD;
    return opened;
}

int data_channel::close_socket(void* handle, curl_socket_t socket) {
    data_channel* channel = nullptr;
    curl_easy_getinfo(handle, CURLINFO_PRIVATE, &channel);
    if (channel != nullptr && channel->socket_ == socket) {
        // libcurl calls back while it waits for the server's last words. By then the number may
        // belong to a socket that another thread is about to make, and Wine's server ends, with all
        // that it serves, when one that is only half made is asked for room.
        channel->socket_ = CURL_SOCKET_BAD;
    }
    return closesocket(socket);
}

CURLcode data_channel::tune_tls(CURL*, void* context, void* self) {
    const auto& channel = *static_cast<const data_channel*>(self);
    if (channel.socket_ != CURL_SOCKET_BAD && channel.reads_ahead_) {
        auto* const tls = static_cast<SSL_CTX*>(context);
        SSL_CTX_set_read_ahead(tls, 1);
        SSL_CTX_set_default_read_buffer_len(tls, read_ahead_bytes);
    }
    return CURLE_OK;
}

int data_channel::look_around(void* self, curl_off_t, curl_off_t, curl_off_t, curl_off_t sent) {
    const auto& channel = *static_cast<const data_channel*>(self);
    const auto over = [&channel] {
        return channel.given_up_ != nullptr && *channel.given_up_;
    };
    if (!over() && sent > smallest_socket_buffer && channel.socket_ != CURL_SOCKET_BAD) {
        channel.await_room();
    }
    return over() ? 1 : 0;
}

void data_channel::await_room() const {
    fd_set room{};
    room.fd_count = 1;
    room.fd_array[0] = socket_;
    timeval limit = longest_wait_for_room;
    // An error is for libcurl to find.
    select(0, nullptr, &room, nullptr, &limit);
}

} // namespace vfs_quilldeck
