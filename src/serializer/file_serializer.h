#pragma once

#include "serializer/node.h"

#include <filesystem>

namespace serializer {

/// Reads and writes settings files through one cache of the process, in which a file that did not
/// change costs no parsing and a tree that did not change costs no write. Any thread may call; all
/// queue on one mutex, file access included. Between processes the writers of a file need a lock
/// of their own.
class file_serializer {
public:
    file_serializer() = delete;

    /// A copy of the file's tree. Throws `std::filesystem::filesystem_error` for a missing file,
    /// `serializer_exception` for one that cannot be opened, and what `node::deserialize` throws;
    /// the file stays as it is.
    static node load_cached(const std::filesystem::path& path);

    /// Writes the tree, unless it is the one that was last loaded or saved. At any moment, also
    /// when the process dies in between, the file is there with its old text or its new one, whole;
    /// the new one is first written to a neighbour, `path` with ".tmp". `keep_backup` leaves the
    /// old file as `path` with ".bak", else there is none afterwards.
    ///
    /// Throws `serializer_exception` when the neighbour cannot be opened or written,
    /// `std::filesystem::filesystem_error` when a file cannot be removed or renamed, and what
    /// `node::serialize` throws; the neighbour stays then.
    static void save_cached(const std::filesystem::path& path, const node& tree, bool keep_backup);
};

} // namespace serializer
