#include "serializer/file_serializer.h"

#include "serializer/exceptions.h"
#include "serializer/file_cache.h"

#include <ext/stdio_filebuf.h>
#include <fcntl.h>
#include <io.h>
#include <share.h>
#include <sys/stat.h>

#include <chrono>
#include <istream>
#include <mutex>
#include <ostream>
#include <source_location>

namespace serializer {

namespace {

namespace fs = std::filesystem;

struct shared_cache {
    std::mutex cache_mutex;
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

std::int64_t last_write_seconds(const fs::path& path) {
    return seconds_of(std::chrono::system_clock::time_point(
        std::chrono::duration_cast<std::chrono::system_clock::duration>(
            std::chrono::file_clock::to_sys(fs::last_write_time(path)).time_since_epoch())));
}

fs::path with_suffix(fs::path path, const wchar_t* suffix) {
    return path += suffix;
}

/// A file opened with a sharing mode, which the standard's own streams cannot be given.
class shared_file {
public:
    shared_file(const fs::path& path, int flags, int sharing, std::ios::openmode mode)
        : buffer_(open(path, flags, sharing), mode | std::ios::binary) {}

    bool is_open() const { return buffer_.is_open(); }

    std::streambuf* buffer() { return &buffer_; }

    /// Writes what is left; false if that fails.
    bool close() { return buffer_.close() != nullptr; }

private:
    static int open(const fs::path& path, int flags, int sharing) {
        int descriptor = -1;
        _wsopen_s(&descriptor, path.c_str(), flags | _O_BINARY | _O_NOINHERIT, sharing,
                  _S_IREAD | _S_IWRITE);
        return descriptor;
    }

    __gnu_cxx::stdio_filebuf<char> buffer_;
};

void read_file(const fs::path& path, node& tree, const char* where) {
    shared_file file(path, _O_RDONLY, _SH_DENYWR, std::ios::in);
    if (!file.is_open()) {
        throw serializer_exception(where, "Stream can not be opened for reading");
    }
    std::istream in(file.buffer());
    tree.deserialize(in);
}

void write_file(const fs::path& path, const node& tree, const char* where) {
    shared_file file(path, _O_WRONLY | _O_CREAT | _O_TRUNC, _SH_DENYRW, std::ios::out);
    if (!file.is_open()) {
        throw serializer_exception(where, "Stream can not be opened for writing");
    }
    std::ostream out(file.buffer());
    tree.serialize(out);
    if (!out.flush() || !file.close()) {
        throw serializer_exception(where, "Stream can not be written");
    }
}

/// Puts the written neighbour in the file's place. The rename replaces the old file in one step, so
/// that the path is never without one: whoever found none would begin with empty settings.
void replace_file(const fs::path& path, const fs::path& written, bool keep_backup) {
    const fs::path backup = with_suffix(path, L".bak");
    fs::remove(backup);
    if (keep_backup && fs::exists(path)) {
        std::error_code no_links;
        fs::create_hard_link(path, backup, no_links);
        if (no_links) {
            fs::rename(path, backup);
        }
    }
    fs::rename(written, path);
}

} // namespace

node file_serializer::load_cached(const fs::path& path) {
    const char* where = std::source_location::current().function_name();
    shared_cache& cache = process_cache();
    const std::lock_guard guard(cache.cache_mutex);
    cache_entry& entry = cache.files.find(path);
    const std::int64_t time = last_write_seconds(path);
    if (!entry.is_current(time)) {
        const std::int64_t reading = now();
        try {
            read_file(path, entry.tree, where);
        } catch (...) {
            entry.tree.clear();
            entry.modified = -1;
            entry.settled = false;
            throw;
        }
        entry.taken(time, reading);
    }
    cache.files.used(entry, now());
    return entry.tree;
}

void file_serializer::save_cached(const fs::path& path, const node& tree, bool keep_backup) {
    const char* where = std::source_location::current().function_name();
    shared_cache& cache = process_cache();
    const std::lock_guard guard(cache.cache_mutex);
    cache_entry& entry = cache.files.find(path);
    if (entry.modified != -1 && fs::exists(path) && entry.tree == tree) {
        // A file that somebody else wrote meanwhile is read again by the next load.
        const std::int64_t time = last_write_seconds(path);
        entry.settled = entry.is_current(time);
        entry.modified = time;
    } else {
        const fs::path neighbour = with_suffix(path, L".tmp");
        write_file(neighbour, tree, where);
        replace_file(path, neighbour, keep_backup);
        entry.tree = tree;
        entry.taken(last_write_seconds(path), now());
    }
    cache.files.used(entry, now());
}

} // namespace serializer
