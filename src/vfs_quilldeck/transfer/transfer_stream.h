#pragma once

#include "utils/rendezvous.h"
#include "utils/slim_lock.h"
#include "utils/thread.h"
#include "vfs_quilldeck/transfer/transfer_account.h"
#include "vfs_quilldeck/transfer/transfer_watch.h"
#include "vfs_quilldeck/transfer/upload_log.h"

#include <curl/curl.h>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>

namespace vfs_quilldeck {

/// The blocking read and write of a remote file's bytes, on top of libcurl, which pushes: a worker
/// thread runs the transfer, and its callback offers libcurl's own buffer to the caller, who fills
/// or empties it in place. The two meet by two auto-reset events and never touch the buffer at the
/// same time. A transfer that broke is taken up again by the next `read`, `write` or `finish`.
///
/// An upload keeps what the server may lack until `close` or `abandon`: whoever makes the upload a
/// file calls `finish`, then asks for the file, and lets go only when that was granted.
///
/// One stream belongs to one caller's thread at a time. All failures are `exception`; each leaves
/// the stream usable.
class transfer_stream {
public:
    /// Values of `get_mode`.
    enum stream_mode : int { closed = 0, reading = 1, writing = 2 };

    explicit transfer_stream(std::shared_ptr<const transfer_account> account);
    transfer_stream(const transfer_stream&) = delete;
    transfer_stream& operator=(const transfer_stream&) = delete;
    /// Abandons an open stream.
    ~transfer_stream();

    /// Starts the transfer of `path`, UTF-8, which stands behind the account's host.
    void open(const std::string& path, int mode);
    /// Starts the open transfer over at the beginning. After a failure it may be called again, and
    /// `get_position` tells where the stream is.
    void rewind();
    /// Ends an upload and returns when the server has all that was written; called again, it looks
    /// at what the server holds. A line that breaks is taken up as long as that brings the server
    /// further, one that stands still is not. After a write that failed and was not repeated it
    /// fails with that one's text.
    void finish();
    /// Ends the transfer and forgets it: an upload after what was written, without a look at
    /// whether the last bytes arrived; a download by breaking it off.
    void close();
    /// Breaks the transfer off, whatever it is in the middle of, and waits for its worker, which
    /// looks at least once a second. The stream is closed then.
    void abandon() noexcept;
    /// Delivers `length` bytes, fewer only at the end of the file. The bytes of a call that failed
    /// are delivered again. Where the file was replaced after a line broke, it fails for good.
    std::uint32_t read(void* buffer, std::uint32_t length);
    /// Takes all `length` bytes. A call that failed is to be repeated with the same bytes.
    std::uint32_t write(const void* buffer, std::uint32_t length);
    /// The end of a download has been delivered.
    bool is_eof() const;

    int get_mode() const { return mode_; }

    /// Bytes delivered, or taken.
    std::int64_t get_position() const { return unconfirmed_ ? unconfirmed_->accepted() : offset_; }

private:
    /// How a worker has ended.
    static constexpr int succeeded = 0;
    static constexpr int failed = -1;

    /// Which content a download reads, as far as the server tells; -1 where it does not.
    struct content_version {
        curl_off_t size = -1;
        curl_off_t time = -1;

        bool operator==(const content_version&) const = default;
    };

    bool start() noexcept;
    void run() noexcept;
    int perform();
    void set_direction(CURL* handle);
    static std::size_t hand_over(char* data, std::size_t size, std::size_t count,
                                 void* stream) noexcept;
    /// A resumed download meets the content that it began with; what libcurl tells of its size is
    /// that of the bytes from `begin` on.
    bool meets_version(std::int64_t begin) noexcept;

    void require(const wchar_t* operation, const void* buffer, int mode) const;
    /// Waits for the next buffer; false when the worker has ended.
    bool wait_for_worker() noexcept;
    /// Gives the served buffer back and waits for the next one.
    bool next_buffer() noexcept;
    /// Gives back what is on offer until the worker has ended.
    void end_worker() noexcept;
    int get_status() const;
    void set_status(int status);
    [[noreturn]] void fail_read() const;

    void write_bytes(upload_log::bytes data);
    /// Puts `data` into the buffers on offer; false when the worker has ended.
    bool place(upload_log::bytes data, bool replay);
    /// The bytes that the server holds of an upload whose line broke, and will hold; -1 if that
    /// cannot be found out.
    std::int64_t find_held();
    /// Restarts an upload there; false when that did not succeed.
    bool resume_at(std::int64_t held);

    const std::shared_ptr<const transfer_account> account_;
    std::string path_;
    /// Where a restarted transfer begins, in bytes.
    std::int64_t offset_ = 0;
    int mode_ = closed;
    /// `mode_` while the worker runs, then `succeeded` or `failed`.
    int status_ = succeeded;
    mutable utils::slim_lock status_lock_;
    /// The two events: `ready` when a buffer waits, `done` when it has been served.
    utils::rendezvous events_;
    std::unique_ptr<utils::pool_thread> thread_;
    transfer_watch watch_;
    /// The worker's, for its callback.
    CURL* handle_ = nullptr;
    char* buffer_ = nullptr;
    std::size_t buffer_size_ = 0;
    std::size_t served_ = 0;

    /// The worker ended because no byte moved for too long.
    bool stood_still_ = false;
    content_version version_;
    bool replaced_ = false;

    /// There while an upload is open.
    std::unique_ptr<upload_log> unconfirmed_;
    /// The text of a write that failed, until it has been made good.
    std::wstring write_failure_;
    bool was_resumed_ = false;
};

} // namespace vfs_quilldeck
