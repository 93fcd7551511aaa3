#pragma once

#include "vfs/item.h"

#include <cstdint>
#include <string>

namespace vfs {

/// An item with content. An open file belongs to one thread at a time.
class file : public item {
public:
    /// A link that serves the bytes directly.
    virtual std::wstring get_direct_link() const = 0;
    /// Copies inside the store into a destination directory; with `move` true moves.
    virtual void copy(const item_ptr& destination, bool move) = 0;
    virtual double get_price() const = 0;
    virtual void set_price(double price) = 0;
    /// Opens in `mode`, a mask of `open_mode`; `size` is the announced length for writing.
    virtual void open(std::int32_t mode, std::int64_t size) = 0;
    /// Ends a transfer; `time` is the modification time to record, 0 or less meaning now.
    virtual void close(time_seconds time) = 0;
    virtual bool is_bof() = 0;
    virtual bool is_eof() = 0;
    /// The flags given to `open`, 0 when closed.
    virtual std::int32_t get_open_mode() const = 0;
    /// Bytes from the beginning.
    virtual std::int64_t get_pos() const = 0;
    /// Moves the position; `origin` is a `seek_origin`.
    virtual void seek(std::int64_t offset, std::int32_t origin) = 0;
    /// Returns the bytes delivered, fewer than `length` only at the end, 0 at the end.
    virtual std::uint32_t read(void* buffer, std::uint32_t length) = 0;
    /// Returns the bytes taken.
    virtual std::uint32_t write(const void* buffer, std::uint32_t length) = 0;
    /// Length in bytes.
    virtual std::int64_t get_size() const = 0;
    virtual time_seconds get_access_date() const = 0;
    virtual time_seconds get_modification_date() const = 0;
    virtual void set_modification_date(time_seconds time) = 0;
    /// The platform's file attributes; a remote file has none.
    virtual std::uint32_t get_attributes() const = 0;
    virtual void set_attributes(std::uint32_t attributes) = 0;

    virtual void set_marked(bool flag) { marked_ = flag; }

    virtual bool is_marked() const { return marked_; }

private:
    bool marked_ = false;
};

} // namespace vfs
