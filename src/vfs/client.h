#pragma once

#include "vfs/item.h"

#include <cstdint>
#include <string>
#include <vector>

namespace vfs {

/// A connection to a store.
class client {
public:
    virtual ~client() = default;

    virtual user_info get_user_info() const = 0;
    /// The root directory of the store.
    virtual item_ptr get_root() = 0;
    /// Walks `path`, names parted by "/" or "\\", from the root; with `create` makes what is
    /// missing.
    virtual item_ptr get_directory(const std::wstring& path, bool create) = 0;
    virtual std::vector<notification> get_user_notifications() = 0;
    virtual storage_info get_storage_info() = 0;
    virtual std::vector<pro_setting> get_pro_settings() = 0;
    virtual void set_pro_setting(const std::wstring& name, double value) = 0;
    virtual void set_pro_setting(const std::wstring& name, std::int32_t value) = 0;
    virtual void set_pro_setting(const std::wstring& name, const std::wstring& value) = 0;

protected:
    client() = default;
    client(const client&) = default;
    client& operator=(const client&) = default;
};

} // namespace vfs
