#include "vfs_quilldeck/data_channel.h"

#include <openssl/ssl.h>

#include <winsock2.h>

#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <memory>

namespace vfs_quilldeck {

namespace {

constexpr std::size_t read_ahead_bytes = std::size_t{256} * 1024;

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

data_channel::data_channel(CURL* handle, const transfer_account& account)
    : control_port_(port_of(account)),
      // A limited transfer leaves data in OpenSSL's buffer and waits at the socket.
      reads_ahead_(account.download_speed_limit <= 0) {
    curl_easy_setopt(handle, CURLOPT_OPENSOCKETFUNCTION, &data_channel::open_socket);
    curl_easy_setopt(handle, CURLOPT_OPENSOCKETDATA, this);
    curl_easy_setopt(handle, CURLOPT_SSL_CTX_FUNCTION, &data_channel::tune_tls);
    curl_easy_setopt(handle, CURLOPT_SSL_CTX_DATA, this);
}

curl_socket_t data_channel::open_socket(void* self, curlsocktype, curl_sockaddr* address) {
    static_cast<data_channel*>(self)->is_data_ =
        port_of(*address) != static_cast<data_channel*>(self)->control_port_;
    return socket(address->family, address->socktype, address->protocol);
}

CURLcode data_channel::tune_tls(CURL*, void* context, void* self) {
    const auto& channel = *static_cast<const data_channel*>(self);
    if (channel.is_data_ && channel.reads_ahead_) {
        auto* const tls = static_cast<SSL_CTX*>(context);
        SSL_CTX_set_read_ahead(tls, 1);
        SSL_CTX_set_default_read_buffer_len(tls, read_ahead_bytes);
    }
    return CURLE_OK;
}

} // namespace vfs_quilldeck
