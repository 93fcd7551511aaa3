#pragma once

#include "utils/slim_lock.h"

#include <curl/curl.h>

#include <cstddef>
#include <deque>

namespace vfs_quilldeck {

/// One entry of a pool. It owns its handle; a copy gets a fresh one.
struct curl_handle_entry {
    bool locked = false;
    CURL* handle;

    curl_handle_entry();
    curl_handle_entry(const curl_handle_entry& other);
    curl_handle_entry& operator=(const curl_handle_entry&) = delete;
    ~curl_handle_entry();
};

/// A pool of libcurl handles. It holds as many as were ever in use at once and never shrinks.
/// Handles are not reset between uses, so that the connection and the TLS session of a handle
/// survive: who takes one overwrites the options that he needs. All its failures are `exception`.
class curl_descriptor_cache {
public:
    curl_descriptor_cache() = default;
    curl_descriptor_cache(const curl_descriptor_cache&) = delete;
    curl_descriptor_cache& operator=(const curl_descriptor_cache&) = delete;
    virtual ~curl_descriptor_cache() = default;

    /// How many entries there are, and how many of them are in use.
    struct usage {
        std::size_t entries;
        std::size_t locked;
    };

    usage get_usage();

    /// Lets go of all handles that are not in use, with their connections.
    void clear();

private:
    friend class curl_descriptor;

    /// Locks the first free entry, or a new one, and answers its position, which stays valid.
    std::size_t acquire();
    void release(std::size_t position);
    CURL* get(std::size_t position);

    std::deque<curl_handle_entry> entries_;
    utils::slim_lock mutex_;
};

/// A scoped lease on one pool entry. It is not shared between threads.
class curl_descriptor {
public:
    explicit curl_descriptor(curl_descriptor_cache& cache);
    curl_descriptor(const curl_descriptor&) = delete;
    curl_descriptor& operator=(const curl_descriptor&) = delete;
    virtual ~curl_descriptor();

    CURL* get() const { return cache_.get(position_); }

private:
    curl_descriptor_cache& cache_;
    std::size_t position_;
};

/// Frees what OpenSSL keeps for the calling thread; to be called when a thread ends that may have
/// used a handle. It has no way to hear of that by itself.
void release_thread() noexcept;

/// The handles of the POSTs.
extern curl_descriptor_cache request_descriptor_cache;
/// The handles of the file transfers.
extern curl_descriptor_cache transfer_descriptor_cache;

} // namespace vfs_quilldeck
