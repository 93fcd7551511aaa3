#pragma once

#include "utils/slim_lock.h"
#include "vfs_quilldeck/items/file_fields.h"
#include "vfs_quilldeck/items/item_link.h"

#include <cstdint>
#include <mutex>
#include <string>
#include <utility>

namespace vfs_quilldeck {

/// What is known of one file of the store: how it is reached, what the listing told, and what has
/// changed since. All objects that stand for the file share it, on any thread.
class file_record {
public:
    file_record(item_link way, file_fields as_listed)
        : link(std::move(way)), description_(std::move(as_listed.description)),
          location_(std::move(as_listed.location)), price_(as_listed.price), size_(as_listed.size),
          modification_date_(as_listed.modification_date), listed(std::move(as_listed)) {}

    const item_link link;

    std::wstring get_description() const { return get(description_); }

    void set_description(const std::wstring& description) { set(description_, description); }

    double get_price() const { return get(price_); }

    void set_price(double price) { set(price_, price); }

    std::int64_t get_size() const { return get(size_); }

    vfs::time_seconds get_modification_date() const { return get(modification_date_); }

    /// Where the content lies on the transfer host.
    std::wstring get_location() const { return get(location_); }

    /// The file has another content than was known.
    void set_content(const std::wstring& location, std::int64_t size,
                     vfs::time_seconds modification_date) {
        const std::lock_guard guard(lock_);
        location_ = location;
        size_ = size;
        modification_date_ = modification_date;
    }

private:
    template <class Value>
    Value get(const Value& field) const {
        const std::lock_guard guard(lock_);
        return field;
    }

    template <class Value>
    void set(Value& field, const Value& value) {
        const std::lock_guard guard(lock_);
        field = value;
    }

    mutable utils::slim_lock lock_;
    std::wstring description_;
    std::wstring location_;
    double price_;
    std::int64_t size_;
    vfs::time_seconds modification_date_;

public:
    /// What never changes; what does is told by the functions.
    const file_fields listed;
};

} // namespace vfs_quilldeck
