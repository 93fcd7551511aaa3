#include "vfs_quilldeck/transfer/transfer_stream.h"

#include "utils/exceptions.h"
#include "vfs_quilldeck/transfer/data_channel.h"
#include "vfs_quilldeck/transfer/transfer_options.h"
#include "vfs_quilldeck/wire/exceptions.h"

#include <algorithm>
#include <cstring>
#include <mutex>
#include <new>
#include <optional>
#include <utility>

namespace vfs_quilldeck {

namespace {

constexpr int succeeded = 0;
constexpr int failed = -1;

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
    if (mode == writing) {
        unconfirmed_ = std::make_unique<upload_log>();
    }
    offset_ = 0;
    mode_ = mode;
    path_ = path;
    if (!start()) {
        mode_ = closed;
        throw exception(L"Open failed", connection_failure_text);
    }
}

bool transfer_stream::start() {
    thread_.reset();
    given_up_ = false;
    buffer_size_ = 0;
    served_ = 0;
    started_ = std::time(nullptr);
    events_.reset();
    try {
        thread_ = std::make_unique<utils::pool_thread>([this] { run(); });
    } catch (const utils::utils_exception&) {
        set_status(failed);
        return false;
    }
    return wait_for_worker() || get_status() == succeeded;
}

void transfer_stream::run() {
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
    lease_ = &lease;
    CURL* const handle = lease.get();
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
    set_transfer_options(handle, *account_, path_);
    const data_channel channel(handle, *account_, &given_up_);
    curl_easy_setopt(handle, CURLOPT_RESUME_FROM_LARGE, curl_off_t{offset_});
    if (account_->upload_speed_limit > 0) {
        curl_easy_setopt(handle, CURLOPT_MAX_SEND_SPEED_LARGE,
                         curl_off_t{account_->upload_speed_limit});
    }
    if (account_->download_speed_limit > 0) {
        curl_easy_setopt(handle, CURLOPT_MAX_RECV_SPEED_LARGE,
                         curl_off_t{account_->download_speed_limit});
    }
    curl_easy_setopt(handle, CURLOPT_BUFFERSIZE, download_buffer_bytes);
    curl_easy_setopt(handle, CURLOPT_UPLOAD_BUFFERSIZE, upload_buffer_bytes);
    return curl_easy_perform(handle) == CURLE_OK ? succeeded : failed;
}

std::size_t transfer_stream::hand_over(char* data, std::size_t size, std::size_t count,
                                       void* stream) noexcept {
    auto& self = *static_cast<transfer_stream*>(stream);
    self.buffer_ = data;
    self.buffer_size_ = size * count;
    self.served_ = 0;
    self.events_.give();
    if (self.given_up_) {
        return self.mode_ == writing ? CURL_READFUNC_ABORT : CURL_WRITEFUNC_ERROR;
    }
    // libcurl limits the transfer as a whole: the limit moves along with each hand-over.
    const auto elapsed = static_cast<long>(std::time(nullptr) - self.started_);
    curl_easy_setopt(self.lease_->get(), CURLOPT_TIMEOUT, elapsed + transfer_timeout_seconds);
    return self.served_;
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

bool transfer_stream::is_eof() const {
    return mode_ == reading && get_status() == succeeded && served_ == buffer_size_;
}

int transfer_stream::get_status() const {
    const std::lock_guard guard(lock_);
    return status_;
}

void transfer_stream::set_status(int status) {
    const std::lock_guard guard(lock_);
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
    constexpr auto operation = L"Read failed";
    require(operation, buffer, reading);
    if (get_status() < succeeded && !start()) {
        throw exception(operation, connection_failure_text);
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
                throw exception(operation, connection_failure_text);
            }
            break;
        }
    }
    offset_ += delivered;
    return delivered;
}

std::uint32_t transfer_stream::write(const void* buffer, std::uint32_t length) {
    constexpr auto operation = L"Write failed";
    require(operation, buffer, writing);
    if (get_status() <= succeeded) {
        resume_upload();
    }
    const upload_log::bytes data(static_cast<const unsigned char*>(buffer), length);
    std::optional<std::size_t> held;
    try {
        held = unconfirmed_->offer(data);
    } catch (const std::bad_alloc&) {
        throw std::wstring(L"Out of memory");
    }
    if (!held || !place(data.subspan(*held), false)) {
        throw exception(operation, connection_failure_text);
    }
    unconfirmed_->accept(length);
    if (served_ == 0) {
        // A new buffer is on offer: libcurl has taken this call's data too.
        unconfirmed_->confirm(unconfirmed_->accepted());
    }
    offset_ = unconfirmed_->confirmed();
    return length;
}

bool transfer_stream::place(upload_log::bytes data, bool replay) {
    while (!data.empty()) {
        const std::size_t size = std::min(buffer_size_ - served_, data.size());
        std::memcpy(buffer_ + served_, data.data(), size);
        served_ += size;
        data = data.subspan(size);
        if (served_ < buffer_size_) {
            continue;
        }
        if (!next_buffer()) {
            return false;
        }
        if (!replay) {
            // libcurl asks for more: it has taken all that came before this call.
            unconfirmed_->confirm(unconfirmed_->accepted());
        }
    }
    return true;
}

void transfer_stream::resume_upload() {
    const auto held = find_stored_size(*account_, path_);
    if (!held || !unconfirmed_->resume_at(*held)) {
        throw exception(L"Write failed", connection_failure_text);
    }
    offset_ = *held;
    if (!start()) {
        throw exception(L"Write failed", connection_failure_text);
    }
    for (std::int64_t at = offset_; at < unconfirmed_->accepted();) {
        const upload_log::bytes piece = unconfirmed_->replay_from(at);
        if (!place(piece, true)) {
            throw exception(L"Write failed", connection_failure_text);
        }
        at += static_cast<std::int64_t>(piece.size());
    }
}

void transfer_stream::close() {
    if (mode_ == closed) {
        throw exception(L"Close failed", L"File is not opened");
    }
    given_up_ = mode_ == reading;
    while (next_buffer()) {
        // Nothing served ends an upload.
    }
    forget();
}

void transfer_stream::abandon() noexcept {
    given_up_ = true;
    while (next_buffer()) {
        // Each buffer on offer is refused.
    }
    forget();
}

void transfer_stream::forget() noexcept {
    thread_.reset();
    unconfirmed_.reset();
    offset_ = 0;
    mode_ = closed;
}

} // namespace vfs_quilldeck
