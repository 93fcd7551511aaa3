#pragma once

#include "utils/named_mutex.h"

#include <cstdint>
#include <filesystem>
#include <map>
#include <optional>
#include <string>

namespace syncer {

/// A file of the store that was brought to this machine to be opened here.
struct local_copy {
    std::filesystem::path local;
    /// Where it is from: the path in the store as bindings name it, and the file's id, which
    /// outlives a rename. Both are empty for a file that the user wants to keep beside the copies.
    std::wstring remote_path;
    std::wstring remote_id;
    /// The time of the last change that the local file had when it arrived, in the units of the
    /// platform's FILETIME. One with another time was changed since.
    std::int64_t date_given = 0;
};

/// A transaction on the record of a user's local copies, which tells an edited copy from an old one
/// and lets whoever synchronises know of all of them. Like `binding_manager` it keeps every other
/// thread and process of the user out, so that none is held over a dialog or a transfer.
class local_copies {
public:
    /// Waits for the mutex without limit, and reads the file; no file is no copies. Throws what
    /// `binding_manager` throws, and `serializer::wrong_format_exception` for what is no record:
    /// the file stays as it is then.
    explicit local_copies(const std::wstring& user_name);

    /// What is known of the copy at that path.
    std::optional<local_copy> find(const std::filesystem::path& local) const;

    /// Notes a copy, in the place of what was known of the same path.
    void put(local_copy copy);

    /// Writes the file. Throws what `serializer::file_serializer::save_cached` throws.
    void save() const;

private:
    /// Case does not tell paths apart here.
    struct path_order {
        bool operator()(const std::filesystem::path& left,
                        const std::filesystem::path& right) const;
    };

    std::wstring user_name_;
    utils::named_mutex mutex_;
    utils::mutex_hold lock_;
    std::map<std::filesystem::path, local_copy, path_order> copies_;
};

} // namespace syncer
