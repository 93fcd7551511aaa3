#pragma once

#include <string>

namespace vfs_quilldeck {

/// What all items of the remote store have beside their contract.
class item {
public:
    virtual ~item() = default;

    /// The identifier as the service gave it, which is what the wire carries; never `get_id()`.
    virtual std::wstring get_raw_id() const = 0;
};

} // namespace vfs_quilldeck
