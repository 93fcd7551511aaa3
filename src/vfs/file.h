#pragma once

#include "vfs/item.h"

#include <cstdint>
#include <memory>
#include <string>

namespace vfs {

/// An item with content. An open file belongs to one thread at a time.
///
/// The object that a directory gives out is common to all who look at the item, so nobody opens it:
/// whoever moves bytes, a stream or a transfer, takes a `duplicate` and opens that. Then readers
/// and a writer of one item work side by side, each on a thread of its own. The object that
/// `create_and_open_file` answers is its caller's alone and is used as it is.
///
/// Who opened a file ends it either by `close`, which keeps what was written, or by `abandon`,
/// which does not. A `close` that failed leaves the file open: it may be called again, as often as
/// the user wants, or the file is abandoned. A file that goes away open is abandoned.
class file : public item {
public:
    /// A link that serves the bytes directly.
    virtual std::wstring get_direct_link() const = 0;
    /// Copies inside the store into a destination directory; with `move` true moves.
    virtual void copy(const item_ptr& destination, bool move) = 0;
    virtual double get_price() const = 0;
    virtual void set_price(double price) = 0;
    /// Opens in `mode`, a mask of `open_mode`; `size` is the announced length for writing. An open
    /// file refuses, and stays as it is.
    virtual void open(std::int32_t mode, std::int64_t size) = 0;
    /// Ends a transfer; `time` is the modification time to record, 0 or less meaning now. After a
    /// `write` that failed and was not repeated with success it fails with the text of that failure
    /// and keeps the old content.
    virtual void close(time_seconds time) = 0;
    virtual bool is_bof() = 0;
    virtual bool is_eof() = 0;
    /// The flags given to `open`, 0 when closed.
    virtual std::int32_t get_open_mode() const = 0;
    /// Bytes from the beginning.
    virtual std::int64_t get_pos() const = 0;
    /// Moves the position; `origin` is a `seek_origin`. An upload that goes back to 0 starts over.
    virtual void seek(std::int64_t offset, std::int32_t origin) = 0;
    /// Returns the bytes delivered, fewer than `length` only at the end, 0 at the end.
    virtual std::uint32_t read(void* buffer, std::uint32_t length) = 0;
    /// Returns the bytes taken. A call that failed took none; it may be repeated with the same
    /// ones.
    virtual std::uint32_t write(const void* buffer, std::uint32_t length) = 0;
    /// Length in bytes.
    virtual std::int64_t get_size() const = 0;
    virtual time_seconds get_access_date() const = 0;
    virtual time_seconds get_modification_date() const = 0;
    virtual void set_modification_date(time_seconds time) = 0;
    /// The platform's file attributes; a remote file has none.
    virtual std::uint32_t get_attributes() const = 0;
    virtual void set_attributes(std::uint32_t attributes) = 0;

    /// Another object for the same file, closed, with an open mode, a position and a transfer of
    /// its own. What is told of the file (its size, dates, description, ...) is common to both and
    /// to all duplicates: what an upload through one of them changed is seen through the others.
    /// Any thread may take one at any time, also of a file that is open.
    virtual std::shared_ptr<file> duplicate() const = 0;
    /// Gives up an open file without keeping it: the transfer ends, what was written is dropped, a
    /// remote file has its old content. It asks the store nothing and waits for no answer. The
    /// object is closed then; on a closed one nothing happens. Like `close` it is called on the
    /// thread that uses the file.
    virtual void abandon() noexcept = 0;

    virtual void set_marked(bool flag) { marked_ = flag; }

    virtual bool is_marked() const { return marked_; }

private:
    bool marked_ = false;
};

} // namespace vfs
