#pragma once

#include "utils/unique_handle.h"
#include "vfs/records.h"

#include <windows.h>

#include <cstdint>
#include <filesystem>
#include <optional>

namespace transfer {

/// The time of a local file's last change, in the units of FILETIME: steps of 100 ns since 1601.
/// Nothing when there is no file. Throws `com::worker_exception` when it cannot be asked for.
std::optional<std::int64_t> read_file_time(const std::filesystem::path& path);

/// A local file that is being made beside its place. Unless it is moved there, it goes with this
/// object, and with the process if that ends before. A thread has one at a time.
class part_file {
public:
    /// False by `operator bool` when it could not be made.
    explicit part_file(const std::filesystem::path& place);
    part_file(const part_file&) = delete;
    part_file& operator=(const part_file&) = delete;
    ~part_file();

    explicit operator bool() const noexcept { return static_cast<bool>(m_file); }

    /// Open for writing until it is moved.
    HANDLE get() const noexcept { return m_file.get(); }

    /// Gives the file, once it is written, the time of its last change, and answers the time that
    /// it has then, as `read_file_time` does. A time that no file can have leaves that of the last
    /// write. Throws `com::worker_exception`.
    std::int64_t set_time(vfs::time_seconds time) const;

    /// Closes the file and puts it in the place, over whatever is there. May be tried again after a
    /// failure.
    bool move_into_place() noexcept;

private:
    /// Whether the file is to go with its handle.
    void set_passing(bool passing) const noexcept;

    const std::filesystem::path m_place;
    std::filesystem::path m_path;
    utils::unique_file m_file;
    /// There is a file at that path, and it is this one.
    bool m_ours = false;
};

} // namespace transfer
