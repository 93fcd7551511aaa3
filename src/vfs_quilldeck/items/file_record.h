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
        : link(std::move(way)), fields_(std::move(as_listed)) {}

    const item_link link;

    // What never changes is read without the lock.
    const std::wstring& id() const noexcept { return fields_.id; }

    const std::wstring& name() const noexcept { return fields_.name; }

    const std::wstring& url() const noexcept { return fields_.link; }

    const std::wstring& direct_link() const noexcept { return fields_.direct_link; }

    std::int32_t access() const noexcept { return fields_.access; }

    vfs::time_seconds access_date() const noexcept { return fields_.access_date; }

    vfs::time_seconds delete_date() const noexcept { return fields_.delete_date; }

    std::wstring get_description() const { return get(fields_.description); }

    void set_description(const std::wstring& description) { set(fields_.description, description); }

    double get_price() const { return get(fields_.price); }

    void set_price(double price) { set(fields_.price, price); }

    std::int64_t get_size() const { return get(fields_.size); }

    vfs::time_seconds get_modification_date() const { return get(fields_.modification_date); }

    /// Where the content lies on the transfer host.
    std::wstring get_location() const { return get(fields_.location); }

    /// The file has another content than was known.
    void set_content(const std::wstring& location, std::int64_t size,
                     vfs::time_seconds modification_date) {
        const std::lock_guard guard(lock_);
        fields_.location = location;
        fields_.size = size;
        fields_.modification_date = modification_date;
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

    file_fields fields_;
    mutable utils::slim_lock lock_;
};

} // namespace vfs_quilldeck
