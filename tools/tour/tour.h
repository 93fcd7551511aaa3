#pragma once

#include "vfs/client.h"

#include <cstdint>
#include <filesystem>

namespace tour {

/// What was moved up and down again.
struct summary {
    std::size_t files = 0;
    std::int64_t bytes = 0;
};

/// Prints the tree, uploads `folder`, reads everything back, and takes one file through a rename, a
/// description, the Trash and back. What it put into the store it deletes, whatever happens. Throws
/// `vfs::exception`, or `std::runtime_error` for the first thing that is not as it should be.
summary run(vfs::client& client, const std::filesystem::path& folder);

} // namespace tour
