#pragma once

#include "serializer/node.h"

#include <cstdint>
#include <filesystem>
#include <map>
#include <memory>

namespace serializer {

/// The last tree that was read from or written to a file. Times are seconds since 1970.
struct cache_entry {
    /// Never changed, as those who loaded it hold it too.
    std::shared_ptr<const node> tree;
    /// The file's last-write time when `tree` was taken; -1: `tree` was never filled.
    std::int64_t modified = -1;
    std::int64_t last_used = -1;
    /// Any later write shows in the last-write time. It does not while the file is so young that a
    /// second write could get the same time.
    bool settled = false;

    /// Whether `tree` is that of the file, whose last-write time is `time`.
    bool is_current(std::int64_t time) const { return settled && time == modified; }

    /// Notes that `tree` was taken at `now`, when the file's last-write time was `time`.
    void taken(std::int64_t time, std::int64_t now);
};

/// What is remembered of settings files. Not safe between threads: its user holds a mutex.
class file_cache {
public:
    /// The entry of that path, an empty one if there was none.
    cache_entry& find(const std::filesystem::path& path) { return entries_[path]; }

    /// Notes the use of an entry and drops all that were not used for 300 seconds.
    void used(cache_entry& entry, std::int64_t now);

private:
    std::map<std::filesystem::path, cache_entry> entries_;
};

} // namespace serializer
