#include "line_cutter.h"

#include "vfs_quilldeck/curl_descriptor_cache.h"

namespace transfer_test {

line_cutter::line_cutter() {
    const vfs_quilldeck::curl_descriptor lease(vfs_quilldeck::transfer_descriptor_cache);
    handle_ = lease.get();
    curl_easy_setopt(handle_, CURLOPT_SOCKOPTFUNCTION, &line_cutter::note_socket);
    curl_easy_setopt(handle_, CURLOPT_SOCKOPTDATA, this);
    curl_easy_setopt(handle_, CURLOPT_DEBUGFUNCTION, &line_cutter::note_data);
    curl_easy_setopt(handle_, CURLOPT_DEBUGDATA, this);
    curl_easy_setopt(handle_, CURLOPT_VERBOSE, 1L);
}

line_cutter::~line_cutter() {
    curl_easy_setopt(handle_, CURLOPT_VERBOSE, 0L);
    curl_easy_setopt(handle_, CURLOPT_DEBUGFUNCTION, nullptr);
    curl_easy_setopt(handle_, CURLOPT_SOCKOPTFUNCTION, nullptr);
}

void line_cutter::cut_now() {
    shutdown(socket_, SD_BOTH);
    ++cuts_;
}

int line_cutter::note_socket(void* cutter, curl_socket_t socket, curlsocktype) {
    static_cast<line_cutter*>(cutter)->socket_ = socket;
    return CURL_SOCKOPT_OK;
}

int line_cutter::note_data(CURL*, curl_infotype type, char*, std::size_t size, void* cutter) {
    auto& self = *static_cast<line_cutter*>(cutter);
    if (self.left_ < 0 || (type != CURLINFO_DATA_IN && type != CURLINFO_DATA_OUT)) {
        return 0;
    }
    self.left_ -= static_cast<curl_off_t>(size);
    if (self.left_ <= 0) {
        self.left_ = -1;
        self.cut_now();
    }
    return 0;
}

} // namespace transfer_test
