#include "line_cutter.h"

#include "vfs_quilldeck/curl_descriptor_cache.h"

#include <algorithm>

namespace transfer_test {

line_cutter::line_cutter() {
    const vfs_quilldeck::curl_descriptor lease(vfs_quilldeck::transfer_descriptor_cache);
    handle_ = lease.get();
    curl_easy_setopt(handle_, CURLOPT_SOCKOPTFUNCTION, &line_cutter::note_socket);
    curl_easy_setopt(handle_, CURLOPT_SOCKOPTDATA, this);
    curl_easy_setopt(handle_, CURLOPT_XFERINFOFUNCTION, &line_cutter::note_progress);
    curl_easy_setopt(handle_, CURLOPT_XFERINFODATA, this);
    curl_easy_setopt(handle_, CURLOPT_NOPROGRESS, 0L);
}

line_cutter::~line_cutter() {
    curl_easy_setopt(handle_, CURLOPT_NOPROGRESS, 1L);
    curl_easy_setopt(handle_, CURLOPT_XFERINFOFUNCTION, nullptr);
    curl_easy_setopt(handle_, CURLOPT_SOCKOPTFUNCTION, nullptr);
}

void line_cutter::cut_after(curl_off_t bytes) {
    limit_ = bytes;
}

void line_cutter::cut_now() {
    shutdown(socket_, SD_BOTH);
    ++cuts_;
}

int line_cutter::note_socket(void* cutter, curl_socket_t socket, curlsocktype) {
    auto& self = *static_cast<line_cutter*>(cutter);
    self.socket_ = socket;
    ++self.sockets_;
    return CURL_SOCKOPT_OK;
}

int line_cutter::note_progress(void* cutter, curl_off_t, curl_off_t received, curl_off_t,
                               curl_off_t sent) {
    auto& self = *static_cast<line_cutter*>(cutter);
    const curl_off_t moved = std::max(received, sent);
    // A transfer of nothing yet may still be at its commands.
    if (self.limit_ >= 0 && moved > 0 && moved >= self.limit_) {
        self.limit_ = -1;
        self.cut_now();
    }
    return 0;
}

} // namespace transfer_test
