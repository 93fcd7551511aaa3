#include "store_control.h"

#include <curl/curl.h>

#include <memory>
#include <sstream>
#include <stdexcept>

namespace support {

namespace {

std::size_t collect(char* data, std::size_t size, std::size_t count, void* text) {
    static_cast<std::string*>(text)->append(data, size * count);
    return size * count;
}

std::string unescape(const std::string& text) {
    std::string out;
    for (auto at = text.begin(); at != text.end(); ++at) {
        const bool escaped = *at == '\\' && at + 1 != text.end();
        at += escaped;
        out.push_back(escaped && *at == 'n' ? '\n' : escaped && *at == 'r' ? '\r' : *at);
    }
    return out;
}

std::string escape_value(const std::string& text) {
    const std::unique_ptr<char, decltype(&curl_free)> escaped(
        curl_easy_escape(nullptr, text.c_str(), static_cast<int>(text.size())), &curl_free);
    return escaped.get();
}

} // namespace

std::string logged_request::value_of(const std::string& key) const {
    const std::string parts = "&" + body;
    const std::size_t at = parts.find("&" + key + "=");
    if (at == std::string::npos) {
        return {};
    }
    const std::size_t from = at + key.size() + 2;
    return parts.substr(from, parts.find('&', from) - from);
}

store_control::store_control(std::string url)
    : url_(std::move(url)), handle_(curl_easy_init(), &curl_easy_cleanup) {}

void store_control::reset() {
    const std::string empty;
    exchange("/_control/reset", &empty);
}

std::vector<logged_request> store_control::log() {
    std::vector<logged_request> requests;
    std::istringstream lines(exchange("/_control/log", nullptr));
    int number = 0;
    for (logged_request request; lines >> number >> request.connection >> request.path;) {
        lines.get();
        std::getline(lines, request.body);
        request.body = unescape(request.body);
        requests.push_back(request);
    }
    return requests;
}

void store_control::fault(const std::vector<std::pair<std::string, std::string>>& settings) {
    std::string body;
    for (const auto& [key, value] : settings) {
        body += (body.empty() ? "" : "&") + key + "=" + escape_value(value);
    }
    exchange("/_control/fault", &body);
}

std::map<std::string, std::int64_t> store_control::stats() {
    std::map<std::string, std::int64_t> found;
    std::istringstream lines(exchange("/_control/stats", nullptr));
    std::string name;
    std::int64_t value = 0;
    while (lines >> name >> value) {
        found[name] = value;
    }
    return found;
}

std::string store_control::exchange(const std::string& path, const std::string* body) {
    curl_easy_reset(handle_.get());
    std::string reply;
    const std::string url = url_ + path;
    curl_easy_setopt(handle_.get(), CURLOPT_URL, url.c_str());
    curl_easy_setopt(handle_.get(), CURLOPT_SSL_VERIFYHOST, 0L);
    curl_easy_setopt(handle_.get(), CURLOPT_SSL_VERIFYPEER, 0L);
    curl_easy_setopt(handle_.get(), CURLOPT_FAILONERROR, 1L);
    curl_easy_setopt(handle_.get(), CURLOPT_WRITEFUNCTION, &collect);
    curl_easy_setopt(handle_.get(), CURLOPT_WRITEDATA, &reply);
    if (body != nullptr) {
        curl_easy_setopt(handle_.get(), CURLOPT_POSTFIELDS, body->c_str());
    }
    const CURLcode code = curl_easy_perform(handle_.get());
    if (code != CURLE_OK) {
        throw std::runtime_error("the store's control " + path +
                                 " failed: " + curl_easy_strerror(code));
    }
    return reply;
}

} // namespace support
