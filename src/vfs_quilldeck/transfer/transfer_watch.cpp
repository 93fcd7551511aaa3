#include "vfs_quilldeck/transfer/transfer_watch.h"

namespace vfs_quilldeck {

void transfer_watch::start(CURL* handle) noexcept {
    handle_ = handle;
    started_ = clock::now();
    last_moved_ = started_;
    moved_ = 0;
    sent_ = 0;
}

bool transfer_watch::goes_on(curl_off_t moved) noexcept {
    if (moved > moved_) {
        moved_ = moved;
        last_moved_ = clock::now();
        extend();
    }
    return !given_up_;
}

void transfer_watch::sent(std::size_t bytes) noexcept {
    sent_ += static_cast<curl_off_t>(bytes);
    goes_on(sent_);
}

std::int64_t transfer_watch::milliseconds_for(std::int64_t bytes) const noexcept {
    using std::chrono::milliseconds;
    const auto took = std::chrono::duration_cast<milliseconds>(last_moved_ - started_).count();
    return moved_ > 0 ? took * bytes / moved_ : 0;
}

void transfer_watch::extend() noexcept {
    const auto elapsed = std::chrono::duration_cast<std::chrono::seconds>(clock::now() - started_);
    curl_easy_setopt(handle_, CURLOPT_TIMEOUT,
                     static_cast<long>(elapsed.count()) + transfer_timeout_seconds);
}

} // namespace vfs_quilldeck
