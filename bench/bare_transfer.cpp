#include "bare_transfer.h"

#include "vfs_quilldeck/transfer/data_channel.h"

#include <algorithm>
#include <cstring>
#include <optional>
#include <stdexcept>

namespace bench {

namespace {

constexpr long buffer_bytes = 512L * 1024L;

} // namespace

bare_transfer::bare_transfer(const vfs_quilldeck::client& client)
    : account_(*client.get_transfer_account()), handle_(curl_easy_init()) {}

bare_transfer::~bare_transfer() {
    curl_easy_cleanup(handle_);
}

void bare_transfer::set_common(const std::string& location) {
    const std::string url = account_.host + location;
    const std::string login = account_.user + ":" + account_.password;
    curl_easy_setopt(handle_, CURLOPT_URL, url.c_str());
    curl_easy_setopt(handle_, CURLOPT_USERPWD, login.c_str());
    curl_easy_setopt(handle_, CURLOPT_USE_SSL, long{CURLUSESSL_ALL});
    curl_easy_setopt(handle_, CURLOPT_SSL_VERIFYHOST, 0L);
    curl_easy_setopt(handle_, CURLOPT_SSL_VERIFYPEER, 0L);
    curl_easy_setopt(handle_, CURLOPT_FTP_FILEMETHOD, long{CURLFTPMETHOD_NOCWD});
    curl_easy_setopt(handle_, CURLOPT_BUFFERSIZE, buffer_bytes);
    curl_easy_setopt(handle_, CURLOPT_UPLOAD_BUFFERSIZE, buffer_bytes);
}

void bare_transfer::perform() {
    const CURLcode code = curl_easy_perform(handle_);
    if (code != CURLE_OK) {
        throw std::runtime_error(std::string("the bare loop failed: ") + curl_easy_strerror(code));
    }
}

void bare_transfer::upload(const std::string& location, std::int64_t size) {
    left_ = size;
    set_common(location);
    curl_easy_setopt(handle_, CURLOPT_UPLOAD, 1L);
    curl_easy_setopt(handle_, CURLOPT_READDATA, this);
    const auto give = [](char* data, std::size_t one, std::size_t count, void* user) {
        auto& self = *static_cast<bare_transfer*>(user);
        const auto bytes = std::min(one * count, static_cast<std::size_t>(self.left_));
        std::memset(data, 'q', bytes);
        self.left_ -= static_cast<std::int64_t>(bytes);
        return bytes;
    };
    curl_easy_setopt(handle_, CURLOPT_READFUNCTION, static_cast<curl_read_callback>(give));
    perform();
}

int bare_transfer::download(const std::string& location, bool read_ahead) {
    curl_easy_setopt(handle_, CURLOPT_SSL_CTX_FUNCTION, nullptr);
    curl_easy_setopt(handle_, CURLOPT_OPENSOCKETFUNCTION, nullptr);
    std::optional<vfs_quilldeck::data_channel> channel;
    if (read_ahead) {
        channel.emplace(handle_, account_);
    }
    pieces_ = 0;
    set_common(location);
    curl_easy_setopt(handle_, CURLOPT_UPLOAD, 0L);
    curl_easy_setopt(handle_, CURLOPT_WRITEDATA, this);
    const auto take = [](char*, std::size_t one, std::size_t count, void* user) {
        ++static_cast<bare_transfer*>(user)->pieces_;
        return one * count;
    };
    curl_easy_setopt(handle_, CURLOPT_WRITEFUNCTION, static_cast<curl_write_callback>(take));
    perform();
    return pieces_;
}

} // namespace bench
