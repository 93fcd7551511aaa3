/// The peer of the transfer benchmarks: the shortest loop on the same libcurl, with the buffers
/// that libcurl asks for and no thread or file between.
#pragma once

#include "vfs_quilldeck/session/client.h"

#include <curl/curl.h>

#include <cstdint>
#include <string>

namespace bench {

class bare_transfer {
public:
    explicit bare_transfer(const vfs_quilldeck::client& client);
    bare_transfer(const bare_transfer&) = delete;
    bare_transfer& operator=(const bare_transfer&) = delete;
    ~bare_transfer();

    /// Uploads `size` bytes of a pattern to a location.
    void upload(const std::string& location, std::int64_t size);
    /// Downloads a location, looks at no byte, and answers in how many pieces libcurl handed them
    /// over. With `read_ahead` the data channel is tuned as the client's own is.
    int download(const std::string& location, bool read_ahead = false);

private:
    void set_common(const std::string& location);
    void perform();

    const vfs_quilldeck::transfer_account account_;
    CURL* handle_;
    std::int64_t left_ = 0;
    int pieces_ = 0;
};

} // namespace bench
