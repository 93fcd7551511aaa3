#pragma once

#include "local_folder.h"
#include "store_walk.h"

#include <string>
#include <vector>

namespace tour {

/// A local file that the tour has put into the store.
struct copied_file {
    std::wstring path; ///< below the folder that all went to
    local_file local;
    std::wstring digest;
};

/// Uploads the files into `target`, each into the folders that it lies in.
std::vector<copied_file> upload_all(const directory_ptr& target,
                                    const std::vector<local_file>& files);

/// Compares name, size, date and content of each file, as a new listing and a new download have
/// them, with the local one; throws `std::runtime_error` for the first that differs.
void read_back(const directory_ptr& target, const std::vector<copied_file>& copied);

} // namespace tour
