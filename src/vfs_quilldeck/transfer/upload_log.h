#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <optional>
#include <span>
#include <vector>

namespace vfs_quilldeck {

/// What an upload retains of its bytes, so that a broken one can go on exactly where the server
/// stands. The bytes form one run of the file, cut by two positions, both counted in bytes from the
/// file's beginning:
///
///     begin ........ confirmed ........ accepted ........ end
///
/// Below `accepted` the caller was told that his write succeeded; what lies above it is data of a
/// write that failed, which may have reached the server all the same and must be written again
/// before anything else. `confirmed` is where a restarted transfer begins: libcurl has taken what
/// lies below it. That is no promise that the server got it, since bytes wait in the buffers of
/// libcurl, of TLS and of both kernels, so the log also keeps some bytes below it. After a restart
/// `confirmed` is what the server holds, and may then lie above `accepted`.
class upload_log {
public:
    /// How much is kept.
    struct bounds {
        /// Below `confirmed`, in bytes. By itself more than what libcurl's buffer (1 MiB) and the
        /// usual largest socket buffers of both sides (4 and 6 MiB) can hold together.
        std::int64_t history = std::int64_t{16} << 20;
        /// The size of one piece of memory.
        std::size_t chunk = std::size_t{64} * 1024;
    };

    using bytes = std::span<const unsigned char>;

    upload_log() = default;

    explicit upload_log(bounds kept) : bounds_(kept) {}

    std::int64_t confirmed() const { return confirmed_; }

    std::int64_t accepted() const { return accepted_; }

    /// Forgets everything: the file starts over.
    void clear() noexcept;

    /// All that was ever taken into the log.
    std::int64_t end() const { return begin_ + size_; }

    /// Takes the data of a write, which stand at `accepted`, into the log. Answers how many of its
    /// first bytes the server holds already; nothing if they are others than those of the write
    /// that failed before. Throws `std::bad_alloc`, and can be called again afterwards.
    std::optional<std::size_t> offer(bytes data);

    /// The first `size` bytes above `accepted` were placed.
    void accept(std::size_t size) { accepted_ += static_cast<std::int64_t>(size); }

    /// libcurl has taken all that lies below `position`.
    void confirm(std::int64_t position);

    /// The server holds `held` bytes. False, with nothing changed, if the log cannot go on from
    /// there.
    bool resume_at(std::int64_t held);

    /// The retained bytes from `position` on that lie in one piece of memory and below `accepted`;
    /// empty at `accepted`. Valid until the next change.
    bytes replay_from(std::int64_t position) const;

private:
    bool equals(std::int64_t position, bytes data) const;
    void append(bytes data);
    void add_chunk();
    void trim_history();
    /// The bytes from `position` on that lie in one chunk.
    bytes piece_at(std::int64_t position) const;

    bounds bounds_;
    /// Each but the last is full, none is empty for longer than it takes to fill it.
    std::deque<std::vector<unsigned char>> chunks_;
    std::vector<unsigned char> spare_;
    std::int64_t begin_ = 0;
    std::int64_t size_ = 0;
    std::int64_t confirmed_ = 0;
    std::int64_t accepted_ = 0;
};

} // namespace vfs_quilldeck
