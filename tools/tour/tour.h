#pragma once

#include "vfs/client.h"

#include <cstdint>
#include <filesystem>
#include <functional>
#include <string>

namespace tour {

/// What was moved up and down again.
struct summary {
    std::size_t files = 0;
    std::int64_t bytes = 0;
};

/// Opens a session of another user, or of a guest with an access id, beside the one of this tour.
using session_opener =
    std::function<vfs::client_ptr(const std::wstring& user, const std::wstring& password)>;

/// Prints the tree, uploads `folder`, reads everything back, works in it, and takes one file
/// through the Trash. The demo user also shares it with the other demo user, and looks in as the
/// guests of its own store. What it put into the store it deletes, whatever happens. Throws
/// `vfs::exception`, or `std::runtime_error` for the first thing that is not as it should be.
summary run(vfs::client& client, const std::filesystem::path& folder,
            const session_opener& sign_in);

} // namespace tour
