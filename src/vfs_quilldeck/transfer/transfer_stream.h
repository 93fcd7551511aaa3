#pragma once

#include "utils/rendezvous.h"
#include "utils/slim_lock.h"
#include "utils/thread.h"
#include "vfs_quilldeck/transfer/transfer_account.h"
#include "vfs_quilldeck/transfer/upload_log.h"
#include "vfs_quilldeck/wire/curl_descriptor_cache.h"

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <ctime>
#include <memory>
#include <string>

namespace vfs_quilldeck {

/// The blocking read and write of a remote file's bytes, on top of libcurl, which pushes: a worker
/// thread runs the transfer, and its callback offers libcurl's own buffer to the caller, who fills
/// or empties it in place. The two meet by two auto-reset events and never touch the buffer at the
/// same time. A transfer that broke is taken up again by the next `read` or `write`.
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
    /// Ends an upload after what was written, or aborts a download. Does not tell whether the last
    /// bytes arrived.
    void close();
    /// Breaks the transfer off, whatever it is in the middle of, and waits for its worker, which
    /// looks at least once a second. The stream is closed then.
    void abandon() noexcept;
    /// Delivers `length` bytes, fewer only at the end of the file. The bytes of a call that failed
    /// are delivered again.
    std::uint32_t read(void* buffer, std::uint32_t length);
    /// Takes all `length` bytes. A call that failed is to be repeated with the same bytes.
    std::uint32_t write(const void* buffer, std::uint32_t length);
    /// The end of a download has been delivered.
    bool is_eof() const;

    int get_mode() const { return mode_; }

private:
    bool start();
    void run();
    int perform();
    static std::size_t hand_over(char* data, std::size_t size, std::size_t count,
                                 void* stream) noexcept;

    void require(const wchar_t* operation, const void* buffer, int mode) const;
    /// Waits for the next buffer; false when the worker has ended.
    bool wait_for_worker() noexcept;
    /// Gives the served buffer back and waits for the next one.
    bool next_buffer() noexcept;
    void forget() noexcept;
    int get_status() const;
    void set_status(int status);

    /// Finds out what the server holds, and restarts exactly there.
    void resume_upload();
    /// Puts `data` into the buffers on offer; false when the worker has ended.
    bool place(upload_log::bytes data, bool replay);

    const std::shared_ptr<const transfer_account> account_;
    std::string path_;
    /// Where a restarted transfer begins, in bytes.
    std::int64_t offset_ = 0;
    int mode_ = closed;
    /// `mode_` while the worker runs; when it has ended 0 for success and -1 for failure.
    int status_ = 0;
    /// The two events: `ready` when a buffer waits, `done` when it has been served.
    utils::rendezvous events_;
    std::unique_ptr<utils::pool_thread> thread_;
    /// The worker's lease, for its callback.
    const curl_descriptor* lease_ = nullptr;
    /// The worker is to break off.
    std::atomic<bool> given_up_ = false;
    std::time_t started_ = 0;
    char* buffer_ = nullptr;
    std::size_t buffer_size_ = 0;
    std::size_t served_ = 0;
    /// There while an upload is open.
    std::unique_ptr<upload_log> unconfirmed_;
    mutable utils::slim_lock lock_;
};

} // namespace vfs_quilldeck
