#include "vfs_quilldeck/transfer/data_channel.h"

#include <openssl/ssl.h>

#include <winsock2.h>

#include <array>
#include <atomic>
#include <cstdint>
#include <cstring>
#include <string_view>

namespace vfs_quilldeck {

namespace {

constexpr std::size_t read_ahead_bytes = std::size_t{256} * 1024;

/// Less than this always fits, and a small file is spared the question for room.
constexpr curl_off_t smallest_socket_buffer = 32'000;

/// libcurl looks at the control channel in between.
constexpr timeval longest_wait_for_room{0, 500'000};

/// A limited transfer leaves data in OpenSSL's buffer and waits at the socket. Pooled handles keep
/// a limit that they once had.
bool is_never_limited(const transfer_account& account) {
    static std::atomic<bool> was_limited = false;
    if (account.download_speed_limit > 0) {
        was_limited = true;
    }
    return !was_limited;
}

/// The port that a reply to EPSV or PASV names, "229 ... (|||port|)" or "227 ...
/// (a,b,c,d,high,low)"; 0 for any other line.
int named_port(std::string_view line) noexcept {
    const bool extended = line.starts_with("229 ");
    if (!extended && !line.starts_with("227 ")) {
        return 0;
    }
    std::array<std::uint32_t, 6> numbers{};
    std::size_t count = 0;
    bool within = false;
    for (const char c : line.substr(4)) {
        const bool digit = c >= '0' && c <= '9';
        if (digit && !within && count++ == numbers.size()) {
            return 0;
        }
        if (digit) {
            numbers[count - 1] = numbers[count - 1] * 10 + static_cast<std::uint32_t>(c - '0');
        }
        within = digit;
    }
    const std::uint32_t port = extended ? numbers[0] : numbers[4] * 256 + numbers[5];
    return count == (extended ? 1U : 6U) && port <= 65'535 ? static_cast<int>(port) : 0;
}

/// The port stands at the same place in the addresses of both families.
int port_of(const curl_sockaddr& address) {
    sockaddr_in internet{};
    std::memcpy(&internet, &address.addr, sizeof(internet));
    return ntohs(internet.sin_port);
}

} // namespace

data_channel::data_channel(CURL* handle, const transfer_account& account, transfer_watch* watch)
    : handle_(handle), watch_(watch), reads_ahead_(is_never_limited(account)) {
    curl_easy_setopt(handle, CURLOPT_PRIVATE, this);
    curl_easy_setopt(handle, CURLOPT_HEADERFUNCTION, &data_channel::hear_reply);
    curl_easy_setopt(handle, CURLOPT_HEADERDATA, this);
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
    curl_easy_setopt(handle_, CURLOPT_HEADERDATA, nullptr);
    curl_easy_setopt(handle_, CURLOPT_HEADERFUNCTION, nullptr);
    curl_easy_setopt(handle_, CURLOPT_PRIVATE, nullptr);
}

std::size_t data_channel::hear_reply(char* line, std::size_t one, std::size_t count, void* self) {
    const std::size_t length = one * count;
    const int port = named_port({line, length});
    if (port != 0) {
        static_cast<data_channel*>(self)->named_port_ = port;
    }
    return length;
}

curl_socket_t data_channel::open_socket(void* self, curlsocktype, curl_sockaddr* address) {
    auto& channel = *static_cast<data_channel*>(self);
    const SOCKET opened = socket(address->family, address->socktype, address->protocol);
    const bool is_data = channel.named_port_ != 0 && port_of(*address) == channel.named_port_;
    channel.socket_ = is_data ? opened : CURL_SOCKET_BAD;
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
    auto* const tls = static_cast<SSL_CTX*>(context);
    if (channel.socket_ == CURL_SOCKET_BAD) {
        // The control channel lives longer than this object; or the data's is not known for sure.
        SSL_CTX_set_mode(tls, SSL_MODE_ENABLE_PARTIAL_WRITE);
        return CURLE_OK;
    }
    if (channel.watch_ != nullptr) {
        SSL_CTX_set_msg_callback(tls, &data_channel::hear_record);
        SSL_CTX_set_msg_callback_arg(tls, channel.watch_);
    }
    if (channel.reads_ahead_) {
        SSL_CTX_set_read_ahead(tls, 1);
        SSL_CTX_set_default_read_buffer_len(tls, read_ahead_bytes);
    }
    return CURLE_OK;
}

void data_channel::hear_record(int is_sent, int, int type, const void* bytes, std::size_t length,
                               ssl_st*, void* watch) {
    // A header ends with the length of its record, which is made when the one before has gone.
    if (is_sent != 0 && type == SSL3_RT_HEADER && length == SSL3_RT_HEADER_LENGTH) {
        const auto* const header = static_cast<const unsigned char*>(bytes);
        static_cast<transfer_watch*>(watch)->sent(header[3] * std::size_t{256} + header[4]);
    }
}

int data_channel::look_around(void* self, curl_off_t, curl_off_t received, curl_off_t,
                              curl_off_t sent) {
    const auto& channel = *static_cast<const data_channel*>(self);
    const bool goes_on = channel.watch_ == nullptr || channel.watch_->goes_on(received + sent);
    if (goes_on && sent > smallest_socket_buffer && channel.socket_ != CURL_SOCKET_BAD) {
        channel.await_room();
    }
    return goes_on ? 0 : 1;
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
