#include "line_cutter.h"

#include "vfs_quilldeck/wire/curl_descriptor_cache.h"

namespace transfer_test {

line_cutter::line_cutter() {
    const vfs_quilldeck::curl_descriptor lease(vfs_quilldeck::transfer_descriptor_cache);
    handle_ = lease.get();
    curl_easy_setopt(handle_, CURLOPT_SOCKOPTDATA, this);
    curl_easy_setopt(
        handle_, CURLOPT_SOCKOPTFUNCTION,
        +[](void* cutter, curl_socket_t socket, curlsocktype) -> int {
            static_cast<line_cutter*>(cutter)->socket_ = socket;
            return CURL_SOCKOPT_OK;
        });
    curl_easy_setopt(handle_, CURLOPT_DEBUGDATA, this);
    curl_easy_setopt(
        handle_, CURLOPT_DEBUGFUNCTION,
        +[](CURL*, curl_infotype type, char*, std::size_t size, void* cutter) -> int {
            if (type == CURLINFO_DATA_IN || type == CURLINFO_DATA_OUT) {
                static_cast<line_cutter*>(cutter)->note(static_cast<curl_off_t>(size));
            }
            return 0;
        });
    curl_easy_setopt(handle_, CURLOPT_VERBOSE, 1L);
}

line_cutter::~line_cutter() {
    curl_easy_setopt(handle_, CURLOPT_VERBOSE, 0L);
    curl_easy_setopt(handle_, CURLOPT_DEBUGFUNCTION, nullptr);
    curl_easy_setopt(handle_, CURLOPT_SOCKOPTFUNCTION, nullptr);
}

void line_cutter::cut_now() {
    shutdown(socket_, SD_BOTH);
}

void line_cutter::note(curl_off_t bytes) {
    if (left_ < 0) {
        return;
    }
    left_ -= bytes;
    if (left_ <= 0) {
        left_ = -1;
        cut_now();
    }
}

} // namespace transfer_test
