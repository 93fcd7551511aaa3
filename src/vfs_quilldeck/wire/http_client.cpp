#include "vfs_quilldeck/wire/http_client.h"

#include "utils/wipe.h"
#include "vfs_quilldeck/wire/curl_descriptor_cache.h"
#include "vfs_quilldeck/wire/exceptions.h"
#include "vfs_quilldeck/wire/program_version.h"
#include "vfs_quilldeck/wire/reply_fields.h"
#include "vfs_quilldeck/wire/service_url.h"
#include "vfs_quilldeck/wire/text_encoding.h"
#include "vfs_quilldeck/wire/url_encode.h"

#include <curl/curl.h>

#include <algorithm>
#include <cstddef>
#include <utility>

namespace vfs_quilldeck {

namespace {

constexpr int request_attempts = 3;
constexpr long request_timeout_seconds = 25;

/// The most that is set aside for what a reply says of its size, in bytes: whoever answers with
/// more has to send it first.
constexpr curl_off_t largest_promise = curl_off_t{64} << 20;

/// A reply on its way.
struct arriving_reply {
    CURL* handle;
    reply_buffer bytes{};
};

std::size_t collect_reply(char* data, std::size_t size, std::size_t count, void* user) {
    auto& reply = *static_cast<arriving_reply*>(user);
    if (reply.bytes.size() == 0) {
        // A listing of many megabytes is then never moved; without the room it grows as it comes.
        curl_off_t promised = 0;
        curl_easy_getinfo(reply.handle, CURLINFO_CONTENT_LENGTH_DOWNLOAD_T, &promised);
        static_cast<void>(reply.bytes.reserve(
            static_cast<std::size_t>(std::clamp(promised, curl_off_t{0}, largest_promise))));
    }
    const std::size_t bytes = size * count;
    return reply.bytes.append(data, bytes) ? bytes : 0;
}

} // namespace

http_client::http_client() {
    const reply_node reply = post_for_reply("/qd_get_path.php", {{L"version", program_version}});
    path_prefix_ = std::make_shared<const std::string>(wide_to_utf8(reply.get_child_text(L"Path")));
}

reply_buffer http_client::post(const std::string& path, const request_params& params) {
    const curl_descriptor lease(request_descriptor_cache);
    CURL* const handle = lease.get();
    const std::string url = get_service_url() + path;
    arriving_reply reply{handle};
    curl_easy_setopt(handle, CURLOPT_URL, url.c_str());
    curl_easy_setopt(handle, CURLOPT_WRITEFUNCTION, &collect_reply);
    curl_easy_setopt(handle, CURLOPT_WRITEDATA, &reply);
    curl_easy_setopt(handle, CURLOPT_SSL_VERIFYHOST, 0L);
    curl_easy_setopt(handle, CURLOPT_SSL_VERIFYPEER, 0L);
    curl_easy_setopt(handle, CURLOPT_TIMEOUT, request_timeout_seconds);
    std::string body = encode_body(params);
    const utils::wipe_at_end secrets(body);
    curl_easy_setopt(handle, CURLOPT_POSTFIELDS, body.c_str());
    if (curl_easy_perform(handle) != CURLE_OK) {
        throw exception(L"Request failed", connection_failure_text);
    }
    return std::move(reply.bytes);
}

reply_buffer http_client::post_retrying(const std::string& path, const request_params& params,
                                        int attempts) {
    for (;;) {
        try {
            return post(path, params);
        } catch (const exception&) {
            if (--attempts == 0) {
                throw;
            }
        }
    }
}

shared_reply http_client::post_for_bytes(const std::string& path, const request_params& params) {
    return std::make_shared<const reply_buffer>(post_retrying(path, params, request_attempts));
}

std::wstring http_client::post_for_text(const std::string& path, const request_params& params) {
    return utf8_to_wide(post_retrying(path, params, request_attempts).view());
}

reply_node http_client::post_for_reply(const std::string& path, const request_params& params) {
    reply_node reply = reply_node::parse(post_for_bytes(path, params));
    throw_error_of(reply);
    return reply;
}

void throw_error_of(const reply_node& reply, bool heed_type) {
    const auto errors = reply.get_children(L"Error");
    if (errors.empty()) {
        return;
    }
    const reply_node& error = errors.front();
    std::wstring name = error.get_child_text(L"Name");
    std::wstring description = error.get_child_text(L"Description");
    if (heed_type && get_int(error, L"Type") == 1) {
        throw item_already_exists_exception(std::move(name), std::move(description));
    }
    throw exception(std::move(name), std::move(description));
}

} // namespace vfs_quilldeck
