#pragma once

#include "serializer/node.h"

#include <filesystem>
#include <memory>

namespace serializer {

/// Reads and writes settings files through one cache of the process, in which a file that did not
/// change costs no parsing and a tree that did not change costs no write. Any thread may call; all
/// queue on one mutex, file access included. Between processes the writers of a file need a lock
/// of their own.
class file_serializer {
public:
    file_serializer() = delete;

    /// The file's tree as it is now; it does not change any more. Whoever wants to change it copies
    /// it. Throws `std::filesystem::filesystem_error` for a missing file, `serializer_exception`
    /// for one that cannot be opened, and what `node::deserialize` throws; the file stays as it is.
    static std::shared_ptr<const node> load_cached(const std::filesystem::path& path);

    /// The tree that was last loaded or saved, if the file did not change since, at the cost of one
    /// query of the file's time; null otherwise, also when there is no file.
    static std::shared_ptr<const node> find_current(const std::filesystem::path& path);

    /// Writes the tree, unless it is the one that was last loaded or saved. The file is replaced as
    /// `replace_file` tells, and this throws what that and `node::serialize` throw.
    static void save_cached(const std::filesystem::path& path, node tree, bool keep_backup);
};

} // namespace serializer
