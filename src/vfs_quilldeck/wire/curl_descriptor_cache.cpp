#include "vfs_quilldeck/wire/curl_descriptor_cache.h"

#include "vfs_quilldeck/wire/exceptions.h"

#include <openssl/crypto.h>

#include <algorithm>
#include <mutex>

namespace vfs_quilldeck {

namespace {

[[noreturn]] void fail(const wchar_t* name) {
    throw exception(name, L"Please, contact software manufacturer");
}

/// libcurl and OpenSSL from the first handle on, until the module goes, and the connections of the
/// pooled handles with it. By itself OpenSSL would leave its end to a handler of the process, which
/// is still called when this module is unloaded already.
class library {
public:
    library() {
        OPENSSL_init_crypto(OPENSSL_INIT_NO_ATEXIT, nullptr);
        curl_global_init(CURL_GLOBAL_ALL);
    }

    library(const library&) = delete;
    library& operator=(const library&) = delete;

    ~library() {
        request_descriptor_cache.clear();
        transfer_descriptor_cache.clear();
        curl_global_cleanup();
        OPENSSL_cleanup();
    }
};

CURL* make_handle() {
    static const library started;
    CURL* const handle = curl_easy_init();
    if (handle != nullptr) {
        // So the one that `cut_connection` finds is all that there is.
        curl_easy_setopt(handle, CURLOPT_MAXCONNECTS, 1L);
    }
    return handle;
}

/// By itself libcurl takes leave of the server and waits for its answer. Handles are let go when
/// the module is unloaded, and whoever unloads it waits, and all who load one: so the connection is
/// cut first, which asks nobody.
void cut_connection(CURL* handle) {
    curl_socket_t idle = CURL_SOCKET_BAD;
    curl_easy_getinfo(handle, CURLINFO_ACTIVESOCKET, &idle);
    if (idle != CURL_SOCKET_BAD) {
        shutdown(idle, SD_BOTH);
    }
}

} // namespace

void release_thread() noexcept {
    OPENSSL_thread_stop();
}

curl_descriptor_cache request_descriptor_cache;
curl_descriptor_cache transfer_descriptor_cache;

curl_handle_entry::curl_handle_entry() : handle(make_handle()) {}

curl_handle_entry::curl_handle_entry(const curl_handle_entry& other)
    : locked(other.locked), handle(make_handle()) {}

curl_handle_entry::~curl_handle_entry() {
    if (handle != nullptr) {
        cut_connection(handle);
        curl_easy_cleanup(handle);
    }
}

std::size_t curl_descriptor_cache::acquire() {
    const std::lock_guard guard(mutex_);
    auto found = std::ranges::find(entries_, false, &curl_handle_entry::locked);
    if (found == entries_.end()) {
        entries_.emplace_back();
        if (entries_.back().handle == nullptr) {
            entries_.pop_back();
            fail(L"CURL descriptor init failed");
        }
        found = entries_.end() - 1;
    }
    if (found->locked) {
        fail(L"CURL descriptor lock failed");
    }
    found->locked = true;
    return static_cast<std::size_t>(found - entries_.begin());
}

void curl_descriptor_cache::release(std::size_t position) {
    const std::lock_guard guard(mutex_);
    if (!entries_[position].locked) {
        fail(L"CURL descriptor unlock failed");
    }
    entries_[position].locked = false;
}

CURL* curl_descriptor_cache::get(std::size_t position) {
    const std::lock_guard guard(mutex_);
    if (!entries_[position].locked) {
        fail(L"CURL descriptor not locked");
    }
    return entries_[position].handle;
}

curl_descriptor_cache::usage curl_descriptor_cache::get_usage() {
    const std::lock_guard guard(mutex_);
    const auto locked = std::ranges::count(entries_, true, &curl_handle_entry::locked);
    return {entries_.size(), static_cast<std::size_t>(locked)};
}

void curl_descriptor_cache::clear() {
    const std::lock_guard guard(mutex_);
    // Positions stay valid: only the end of the list may go.
    while (!entries_.empty() && !entries_.back().locked) {
        entries_.pop_back();
    }
}

curl_descriptor::curl_descriptor(curl_descriptor_cache& cache)
    : cache_(cache), position_(cache.acquire()) {}

curl_descriptor::~curl_descriptor() {
    cache_.release(position_);
}

} // namespace vfs_quilldeck
