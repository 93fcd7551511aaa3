#pragma once

#include "vfs/records.h"

#include <cstdint>
#include <memory>
#include <string>

namespace vfs {

class item;
class client;

/// An item as it leaves a directory or a client. The count is thread-safe: items move between the
/// shell's threads and worker threads, and outlive the directory that listed them.
using item_ptr = std::shared_ptr<item>;
using client_ptr = std::shared_ptr<client>;

/// Anything that can be listed, opened, copied or shown. Every operation may throw an
/// `exception`; an operation that a class does not offer throws one named "Internal error".
class item {
public:
    item() = default;
    item(const item&) = delete;
    item& operator=(const item&) = delete;
    virtual ~item() = default;

    /// Display name, also the key of `directory::find_item_by_name`.
    virtual std::wstring get_name() const = 0;
    /// Identifier, unique within a store.
    virtual std::wstring get_id() const = 0;
    /// The path as the store knows it; on a remote item a round trip.
    virtual std::wstring get_path() = 0;
    virtual std::wstring get_description() const = 0;
    virtual void set_description(const std::wstring& description) = 0;
    /// An `item_type`.
    virtual std::int32_t get_type() const = 0;
    /// The bytes of an image of the item; on a remote item a round trip.
    virtual byte_buffer get_thumbnail() = 0;
    /// Stores an `access_value`.
    virtual void set_access(std::int32_t access) = 0;
    virtual std::int32_t get_access() const = 0;
    /// The item's public link.
    virtual std::wstring get_link() const = 0;
    virtual time_seconds get_creation_date() const = 0;
    /// `time_unknown` unless the item lies in the Trash.
    virtual time_seconds get_delete_date() const = 0;
    /// Brings the item back from the Trash.
    virtual void restore() = 0;
};

} // namespace vfs
