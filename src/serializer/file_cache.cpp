#include "serializer/file_cache.h"

namespace serializer {

void cache_entry::taken(std::int64_t time, std::int64_t now) {
    // Times are read in whole seconds, and some volumes keep only every other second.
    constexpr std::int64_t coarsest = 2;
    modified = time;
    settled = now - time >= coarsest;
}

void file_cache::used(cache_entry& entry, std::int64_t now) {
    constexpr std::int64_t kept = 300;
    entry.last_used = now;
    std::erase_if(entries_, [now](const auto& item) { return item.second.last_used < now - kept; });
}

} // namespace serializer
