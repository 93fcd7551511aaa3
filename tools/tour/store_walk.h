#pragma once

#include "vfs/vfs.h"

#include <memory>
#include <string>

namespace tour {

using directory_ptr = std::shared_ptr<vfs::directory>;
using file_ptr = std::shared_ptr<vfs::file>;

/// The item as a directory or a file; throws `std::runtime_error` for one of the other kind.
directory_ptr as_directory(const vfs::item_ptr& item);
file_ptr as_file(const vfs::item_ptr& item);

/// Prints the items below `directory`, folder by folder.
void print_tree(vfs::directory& directory, const std::wstring& indent);

/// Uploads the content of `local` into `directory` under `name`; answers its digest.
std::wstring upload(vfs::directory& directory, const std::wstring& name, const std::wstring& local,
                    std::int64_t size, vfs::time_seconds modified);

/// The digest of the content as the store serves it.
std::wstring digest_of(vfs::file& file);

} // namespace tour
