#pragma once

#include "vfs/vfs.h"

#include <memory>
#include <string>
#include <vector>

namespace tour {

using directory_ptr = std::shared_ptr<vfs::directory>;
using file_ptr = std::shared_ptr<vfs::file>;

/// The item as a directory or a file; throws `std::runtime_error` for one of the other kind.
directory_ptr as_directory(const vfs::item_ptr& item);
file_ptr as_file(const vfs::item_ptr& item);

/// The folder at the end of that path below `from`; what is missing is made.
directory_ptr walk_to(const directory_ptr& from, const std::vector<std::wstring>& folders);

/// Whether a new listing of `directory` has an item with that id.
bool holds_item(vfs::directory& directory, const std::wstring& id);

/// Prints the items below `directory`, folder by folder.
void print_tree(vfs::directory& directory, const std::wstring& indent);

/// Uploads the content of `local` into `directory` under `name`; answers its digest.
std::wstring upload(vfs::directory& directory, const std::wstring& name, const std::wstring& local,
                    std::int64_t size, vfs::time_seconds modified);

/// The digest of the content as the store serves it.
std::wstring digest_of(vfs::file& file);

} // namespace tour
