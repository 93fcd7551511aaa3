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

/// The same time in the unit of the contracts, cut to whole seconds.
vfs::time_seconds seconds_of_file_time(std::int64_t time) noexcept;

/// A local file that is being made beside its place. Unless it is moved there, it goes with this
/// object.
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

    bool set_time(vfs::time_seconds time) const noexcept;

    /// Closes the file and puts it in the place, over whatever is there. May be tried again after a
    /// failure.
    bool move_into_place() noexcept;

private:
    const std::filesystem::path m_place;
    std::filesystem::path m_path;
    utils::unique_file m_file;
    /// There is a file at that path, and it is this one.
    bool m_ours = false;
};

} // namespace transfer
