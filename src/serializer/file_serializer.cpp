#include "serializer/file_serializer.h"

#include "serializer/document.h"
#include "serializer/file_cache.h"
#include "serializer/settings_file.h"
#include "utils/filesystem.h"
#include "utils/slim_lock.h"

#include <chrono>
#include <mutex>
#include <source_location>
#include <sstream>
#include <utility>

namespace serializer {

namespace {

namespace fs = std::filesystem;

struct shared_cache {
    utils::slim_lock cache_mutex;
    file_cache files;
};

shared_cache& process_cache() {
    static shared_cache cache;
    return cache;
}

std::int64_t seconds_of(std::chrono::system_clock::time_point time) {
    return std::chrono::floor<std::chrono::seconds>(time).time_since_epoch().count();
}

std::int64_t now() {
    return seconds_of(std::chrono::system_clock::now());
}

std::int64_t seconds_of(fs::file_time_type time) {
    return seconds_of(std::chrono::system_clock::time_point(
        std::chrono::duration_cast<std::chrono::system_clock::duration>(
            std::chrono::file_clock::to_sys(time).time_since_epoch())));
}

std::int64_t last_write_seconds(const fs::path& path) {
    return seconds_of(fs::last_write_time(path));
}

std::shared_ptr<const node> read_tree(const fs::path& path, const char* where) {
    const auto read = std::make_shared<document>();
    read->root().deserialize(read_file(path, where));
    return {read, &read->root()};
}

void write_tree(const fs::path& path, const node& tree, bool keep_backup, const char* where) {
    std::ostringstream text;
    tree.serialize(text);
    replace_file(path, text.view(), keep_backup, where);
}

} // namespace

std::shared_ptr<const node> file_serializer::load_cached(const fs::path& path) {
    const char* where = std::source_location::current().function_name();
    shared_cache& cache = process_cache();
    const std::lock_guard guard(cache.cache_mutex);
    cache_entry& entry = cache.files.find(path);
    const std::int64_t time = last_write_seconds(path);
    if (!entry.is_current(time)) {
        const std::int64_t reading = now();
        try {
            entry.tree = read_tree(path, where);
        } catch (...) {
            entry.tree.reset();
            entry.modified = -1;
            entry.settled = false;
            throw;
        }
        entry.taken(time, reading);
    }
    cache.files.used(entry, now());
    return entry.tree;
}

std::shared_ptr<const node> file_serializer::find_current(const fs::path& path) {
    shared_cache& cache = process_cache();
    const std::lock_guard guard(cache.cache_mutex);
    cache_entry& entry = cache.files.find(path);
    std::error_code failure;
    const fs::file_time_type time = fs::last_write_time(path, failure);
    if (failure || !entry.is_current(seconds_of(time))) {
        return nullptr;
    }
    cache.files.used(entry, now());
    return entry.tree;
}

void file_serializer::save_cached(const fs::path& path, node tree, bool keep_backup) {
    const char* where = std::source_location::current().function_name();
    shared_cache& cache = process_cache();
    const std::lock_guard guard(cache.cache_mutex);
    cache_entry& entry = cache.files.find(path);
    if (entry.modified != -1 && utils::filesystem::exists(path) && *entry.tree == tree) {
        // A file that somebody else wrote meanwhile is read again by the next load.
        const std::int64_t time = last_write_seconds(path);
        entry.settled = entry.is_current(time);
        entry.modified = time;
    } else {
        write_tree(path, tree, keep_backup, where);
        // On the heap, wherever the caller's tree is: the entry outlives it.
        entry.tree = std::make_shared<const node>(std::move(tree), node::allocator_type());
        entry.taken(last_write_seconds(path), now());
    }
    cache.files.used(entry, now());
}

} // namespace serializer
