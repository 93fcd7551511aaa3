#include "vfs_quilldeck/transfer/transfer_options.h"

#include "vfs_quilldeck/transfer/data_channel.h"
#include "vfs_quilldeck/transfer/transfer_watch.h"
#include "vfs_quilldeck/wire/curl_descriptor_cache.h"
#include "vfs_quilldeck/wire/exceptions.h"

#include <windows.h>

#include <cstddef>

namespace vfs_quilldeck {

namespace {

std::size_t discard(char*, std::size_t size, std::size_t count, void*) {
    return size * count;
}

/// Lets a handle ask for the size alone. Its next user knows nothing of that and gets it back as it
/// was, whatever happens here.
class size_only {
public:
    explicit size_only(CURL* handle) : handle_(handle) {
        curl_easy_setopt(handle, CURLOPT_UPLOAD, 0L);
        curl_easy_setopt(handle, CURLOPT_NOBODY, 1L);
        curl_easy_setopt(handle, CURLOPT_WRITEFUNCTION, &discard);
        curl_easy_setopt(handle, CURLOPT_FILETIME, 0L);
        curl_easy_setopt(handle, CURLOPT_FORBID_REUSE, 0L);
        curl_easy_setopt(handle, CURLOPT_RESUME_FROM_LARGE, curl_off_t{0});
    }

    size_only(const size_only&) = delete;
    size_only& operator=(const size_only&) = delete;

    ~size_only() { curl_easy_setopt(handle_, CURLOPT_NOBODY, 0L); }

private:
    CURL* const handle_;
};

std::optional<std::int64_t> ask_stored_size(CURL* handle) {
    switch (curl_easy_perform(handle)) {
    case CURLE_OK:
        break;
    case CURLE_REMOTE_FILE_NOT_FOUND:
        return 0;
    default:
        return std::nullopt;
    }
    curl_off_t size = -1;
    curl_easy_getinfo(handle, CURLINFO_CONTENT_LENGTH_DOWNLOAD_T, &size);
    return size < 0 ? std::nullopt : std::optional<std::int64_t>(size);
}

} // namespace

void set_transfer_options(CURL* handle, const transfer_account& account, const std::string& path) {
    if (!account.user.empty() || !account.password.empty()) {
        const std::string login = account.user + ":" + account.password;
        curl_easy_setopt(handle, CURLOPT_USERPWD, login.c_str());
    }
    curl_easy_setopt(handle, CURLOPT_SSL_VERIFYHOST, 0L);
    curl_easy_setopt(handle, CURLOPT_SSL_VERIFYPEER, 0L);
    curl_easy_setopt(handle, CURLOPT_USE_SSL, long{CURLUSESSL_ALL});
    curl_easy_setopt(handle, CURLOPT_TIMEOUT, transfer_timeout_seconds);
    const std::string url = account.host + path;
    curl_easy_setopt(handle, CURLOPT_URL, url.c_str());
    // A location is named whole in each command, without walking into its folder first.
    curl_easy_setopt(handle, CURLOPT_FTP_FILEMETHOD, long{CURLFTPMETHOD_NOCWD});
}

std::optional<std::int64_t> find_stored_size(const transfer_account& account,
                                             const std::string& path,
                                             const stored_size_question& question) {
    using std::chrono::steady_clock;
    constexpr DWORD pause_milliseconds = 50;
    const curl_descriptor lease(transfer_descriptor_cache);
    const size_only only(lease.get());
    set_transfer_options(lease.get(), account, path);
    const data_channel channel(lease.get(), account);

    const auto began = steady_clock::now();
    auto changed = began;
    std::optional<std::int64_t> size = ask_stored_size(lease.get());
    while (size && *size <= question.most && steady_clock::now() - changed < question.rest) {
        if (steady_clock::now() - began > question.limit) {
            throw exception(L"Transfer failed",
                            L"The server goes on changing a file that nothing is sent to");
        }
        Sleep(pause_milliseconds);
        const auto before = size;
        size = ask_stored_size(lease.get());
        if (size && *size < *before) {
            return std::nullopt;
        }
        if (size != before) {
            changed = steady_clock::now();
        }
    }
    return size;
}

} // namespace vfs_quilldeck
