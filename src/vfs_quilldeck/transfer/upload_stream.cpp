/// The uploading half of `transfer_stream`: what is retained, and how a broken upload goes on.
#include "vfs_quilldeck/transfer/transfer_options.h"
#include "vfs_quilldeck/transfer/transfer_stream.h"
#include "vfs_quilldeck/wire/exceptions.h"

#include <algorithm>
#include <chrono>
#include <cstring>
#include <new>

namespace vfs_quilldeck {

namespace {

using std::chrono::milliseconds;

/// A server that stands still for this long has read all that it will get of a broken line. On a
/// slow line it hears nothing for as long as a record of TLS takes, and two of them are waited for.
milliseconds rest_of(bool was_resumed, std::int64_t two_records) {
    constexpr milliseconds shortest{50};
    constexpr milliseconds after_resume{1'000};
    constexpr milliseconds longest{5'000};
    return std::clamp(milliseconds(two_records), was_resumed ? after_resume : shortest, longest);
}

constexpr std::int64_t tls_record = 16'384;

} // namespace

std::uint32_t transfer_stream::write(const void* buffer, std::uint32_t length) {
    require(L"Write failed", buffer, writing);
    try {
        write_bytes({static_cast<const unsigned char*>(buffer), length});
    } catch (const std::bad_alloc&) {
        write_failure_ = L"Out of memory";
        throw write_failure_;
    } catch (const exception& failure) {
        write_failure_ = failure.get_description();
        throw;
    }
    if (unconfirmed_->accepted() == unconfirmed_->end()) {
        write_failure_.clear();
    }
    return length;
}

void transfer_stream::write_bytes(upload_log::bytes data) {
    const auto broken = [] {
        return exception(L"Write failed", connection_failure_text);
    };
    if (get_status() <= succeeded && !resume_at(find_held())) {
        throw broken();
    }
    const auto held = unconfirmed_->offer(data);
    if (!held || !place(data.subspan(*held), false)) {
        throw broken();
    }
    unconfirmed_->accept(data.size());
    if (served_ == 0) {
        // A new buffer is on offer: libcurl has taken this call's data too.
        unconfirmed_->confirm(unconfirmed_->accepted());
    }
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

std::int64_t transfer_stream::find_held() {
    if (unconfirmed_->end() == 0) {
        // Nothing has been sent, or the upload has been rewound: it begins in any case.
        return 0;
    }
    const auto rest = rest_of(was_resumed_, watch_.milliseconds_for(2 * tls_record));
    return find_stored_size(*account_, path_, {rest, unconfirmed_->end()}).value_or(-1);
}

bool transfer_stream::resume_at(std::int64_t held) {
    if (held < 0 || !unconfirmed_->resume_at(held)) {
        return false;
    }
    was_resumed_ = true;
    offset_ = held;
    if (!start()) {
        return false;
    }
    for (std::int64_t at = held; at < unconfirmed_->accepted();) {
        const upload_log::bytes piece = unconfirmed_->replay_from(at);
        if (!place(piece, true)) {
            return false;
        }
        at += static_cast<std::int64_t>(piece.size());
    }
    return true;
}

void transfer_stream::finish() {
    constexpr auto operation = L"Close failed";
    if (mode_ != writing) {
        throw exception(operation, L"File is not opened");
    }
    if (!write_failure_.empty()) {
        watch_.give_up();
        end_worker();
        throw exception(operation, write_failure_);
    }
    bool runs = get_status() == writing;
    // What the server is known to have had when the present try began.
    std::int64_t reached = runs ? offset_ : -1;
    for (;;) {
        if (runs) {
            end_worker();
            if (get_status() == succeeded) {
                return;
            }
            if (stood_still_) {
                throw exception(operation, connection_failure_text);
            }
        }
        const std::int64_t held = find_held();
        // A location without bytes may be one that is not there.
        if (held > 0 && held == unconfirmed_->accepted()) {
            return;
        }
        if (held <= reached) {
            throw exception(operation, connection_failure_text);
        }
        reached = held;
        runs = resume_at(held);
    }
}

} // namespace vfs_quilldeck
