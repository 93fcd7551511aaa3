#include "vfs_quilldeck/transfer/transfer_stream.h"

#include "vfs_quilldeck/transfer/data_channel.h"
#include "vfs_quilldeck/transfer/transfer_options.h"
#include "vfs_quilldeck/wire/curl_descriptor_cache.h"
#include "vfs_quilldeck/wire/exceptions.h"

#include <algorithm>
#include <cstring>
#include <exception>
#include <mutex>
#include <utility>

namespace vfs_quilldeck {

namespace {

/// libcurl's buffers. Each piece that it sends or receives is a call of the platform's sockets, and
/// each hand-over a change of threads.
constexpr long download_buffer_bytes = 512L * 1024L;
constexpr long upload_buffer_bytes = 1024L * 1024L;

int ignore_seek(void*, curl_off_t, int) {
    return CURL_SEEKFUNC_OK;
}

} // namespace

transfer_stream::transfer_stream(std::shared_ptr<const transfer_account> account)
    : account_(std::move(account)) {}

transfer_stream::~transfer_stream() {
    abandon();
}

void transfer_stream::open(const std::string& path, int mode) {
    if (mode <= closed) {
        throw exception(L"Open failed", L"Invalid open mode");
    }
    if (mode_ != closed) {
        throw exception(L"Open failed", L"File already opened");
    }
    auto log = mode == writing ? std::make_unique<upload_log>() : nullptr;
    path_ = path;
    unconfirmed_ = std::move(log);
    mode_ = mode;
    if (!start()) {
        abandon();
        throw exception(L"Open failed", connection_failure_text);
    }
}

bool transfer_stream::start() noexcept {
    thread_.reset();
    buffer_size_ = 0;
    served_ = 0;
    stood_still_ = false;
    events_.reset();
    watch_.reset();
    try {
        thread_ = std::make_unique<utils::pool_thread>([this] { run(); });
    } catch (const std::exception&) {
        set_status(failed);
        return false;
    }
    return wait_for_worker() || get_status() == succeeded;
}

void transfer_stream::run() noexcept {
    set_status(mode_);
    int result = failed;
    try {
        result = perform();
    } catch (...) {
        result = failed;
    }
    set_status(result);
    events_.end();
}

int transfer_stream::perform() {
    const curl_descriptor lease(transfer_descriptor_cache);
    handle_ = lease.get();
    set_direction(handle_);
    set_transfer_options(handle_, *account_, path_);
    const data_channel channel(handle_, *account_, &watch_);
    curl_easy_setopt(handle_, CURLOPT_RESUME_FROM_LARGE, curl_off_t{offset_});
    // Where a file has become shorter, libcurl keeps a connection whose server waits for a command.
    curl_easy_setopt(handle_, CURLOPT_FORBID_REUSE, mode_ == reading && offset_ > 0 ? 1L : 0L);
    if (account_->upload_speed_limit > 0) {
        curl_easy_setopt(handle_, CURLOPT_MAX_SEND_SPEED_LARGE,
                         curl_off_t{account_->upload_speed_limit});
    }
    if (account_->download_speed_limit > 0) {
        curl_easy_setopt(handle_, CURLOPT_MAX_RECV_SPEED_LARGE,
                         curl_off_t{account_->download_speed_limit});
    }
    curl_easy_setopt(handle_, CURLOPT_BUFFERSIZE, download_buffer_bytes);
    curl_easy_setopt(handle_, CURLOPT_UPLOAD_BUFFERSIZE, upload_buffer_bytes);
    watch_.start(handle_);
    const CURLcode code = curl_easy_perform(handle_);
    stood_still_ = code == CURLE_OPERATION_TIMEDOUT;
    // The file is shorter now, or ends just where the download was to go on.
    if (mode_ == reading && (code == CURLE_BAD_DOWNLOAD_RESUME ||
                             (code == CURLE_OK && buffer_size_ == 0 && !meets_version(0)))) {
        replaced_ = true;
        return failed;
    }
    return code == CURLE_OK ? succeeded : failed;
}

void transfer_stream::set_direction(CURL* handle) {
    curl_easy_setopt(handle, CURLOPT_READFUNCTION, &transfer_stream::hand_over);
    curl_easy_setopt(handle, CURLOPT_WRITEFUNCTION, &transfer_stream::hand_over);
    curl_easy_setopt(handle, CURLOPT_SEEKFUNCTION, &ignore_seek);
    if (mode_ == writing) {
        curl_easy_setopt(handle, CURLOPT_UPLOAD, 1L);
        curl_easy_setopt(handle, CURLOPT_READDATA, this);
        // Some versions of libcurl turn this on for a resumed upload and leave it on in the handle.
        curl_easy_setopt(handle, CURLOPT_APPEND, 0L);
    } else {
        curl_easy_setopt(handle, CURLOPT_UPLOAD, 0L);
        curl_easy_setopt(handle, CURLOPT_WRITEDATA, this);
    }
    // Beside the size it is what tells one version of a file from the next.
    curl_easy_setopt(handle, CURLOPT_FILETIME, mode_ == reading ? 1L : 0L);
}

std::size_t transfer_stream::hand_over(char* data, std::size_t size, std::size_t count,
                                       void* stream) noexcept {
    auto& self = *static_cast<transfer_stream*>(stream);
    const bool is_first = self.buffer_size_ == 0;
    self.buffer_ = data;
    self.buffer_size_ = size * count;
    self.served_ = 0;
    if (self.mode_ == reading && is_first && !self.meets_version(self.offset_)) {
        self.replaced_ = true;
        return CURL_WRITEFUNC_ERROR;
    }
    self.events_.give();
    self.watch_.handed_over();
    if (self.watch_.is_given_up()) {
        return self.mode_ == writing ? CURL_READFUNC_ABORT : CURL_WRITEFUNC_ERROR;
    }
    return self.served_;
}

bool transfer_stream::meets_version(std::int64_t begin) noexcept {
    content_version now;
    curl_easy_getinfo(handle_, CURLINFO_CONTENT_LENGTH_DOWNLOAD_T, &now.size);
    now.size += now.size < 0 ? 0 : begin;
    curl_easy_getinfo(handle_, CURLINFO_FILETIME_T, &now.time);
    if (offset_ == 0) {
        // Nothing has been delivered: whatever it is, it begins here.
        version_ = now;
        return true;
    }
    return now == version_ && now.size >= 0;
}

bool transfer_stream::wait_for_worker() noexcept {
    if (!thread_) {
        return false;
    }
    if (events_.wait_ready()) {
        return true;
    }
    // The worker still runs its last instructions, which touch this object.
    thread_->join();
    return false;
}

bool transfer_stream::next_buffer() noexcept {
    events_.set_done();
    return wait_for_worker();
}

void transfer_stream::end_worker() noexcept {
    while (next_buffer()) {
        // Nothing served ends an upload and aborts a download.
    }
}

bool transfer_stream::is_eof() const {
    return mode_ == reading && get_status() == succeeded && served_ == buffer_size_;
}

int transfer_stream::get_status() const {
    const std::lock_guard guard(status_lock_);
    return status_;
}

void transfer_stream::set_status(int status) {
    const std::lock_guard guard(status_lock_);
    status_ = status;
}

void transfer_stream::require(const wchar_t* operation, const void* buffer, int mode) const {
    if (buffer == nullptr) {
        throw exception(operation, L"buffer is NULL");
    }
    if (mode_ == closed) {
        throw exception(operation, L"File not opened");
    }
    if (mode_ != mode) {
        throw exception(operation, L"Incorrect file mode");
    }
}

std::uint32_t transfer_stream::read(void* buffer, std::uint32_t length) {
    require(L"Read failed", buffer, reading);
    if (get_status() < succeeded && (replaced_ || !start())) {
        fail_read();
    }
    if (get_status() == succeeded) {
        return 0;
    }
    auto* const to = static_cast<char*>(buffer);
    std::uint32_t delivered = 0;
    while (delivered < length) {
        const std::size_t size =
            std::min(buffer_size_ - served_, static_cast<std::size_t>(length - delivered));
        std::memcpy(to + delivered, buffer_ + served_, size);
        served_ += size;
        delivered += static_cast<std::uint32_t>(size);
        if (served_ == buffer_size_ && !next_buffer()) {
            if (get_status() != succeeded) {
                fail_read();
            }
            break;
        }
    }
    offset_ += delivered;
    return delivered;
}

void transfer_stream::fail_read() const {
    throw exception(L"Read failed",
                    replaced_ ? L"The file was replaced in the store while it was being read"
                              : connection_failure_text);
}

void transfer_stream::rewind() {
    if (mode_ == closed) {
        throw exception(L"Open failed", L"File not opened");
    }
    if (mode_ == reading) {
        watch_.give_up();
    }
    end_worker();
    // Late bytes of an upload's broken line must not meet those of the new one.
    if (mode_ == writing && get_status() == failed && find_held() < 0) {
        throw exception(L"Open failed", connection_failure_text);
    }
    offset_ = 0;
    replaced_ = false;
    write_failure_.clear();
    if (unconfirmed_) {
        unconfirmed_->clear();
    }
    if (!start()) {
        throw exception(L"Open failed", connection_failure_text);
    }
}

void transfer_stream::close() {
    if (mode_ == closed) {
        throw exception(L"Close failed", L"File is not opened");
    }
    if (mode_ == writing) {
        end_worker();
    }
    abandon();
}

void transfer_stream::abandon() noexcept {
    watch_.give_up();
    end_worker();
    thread_.reset();
    unconfirmed_.reset();
    offset_ = 0;
    replaced_ = false;
    write_failure_.clear();
    was_resumed_ = false;
    mode_ = closed;
}

} // namespace vfs_quilldeck
