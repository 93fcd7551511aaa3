#include "service_url.h"

#include "vfs_quilldeck/wire/service_url.h"

#include <cstdio>
#include <cstdlib>

namespace support {

namespace {

std::string& current_url() {
    static std::string url = environment("QUILLDECK_TEST_HTTPS_URL");
    return url;
}

} // namespace

void set_service_url(const std::string& url) {
    current_url() = url;
}

std::string environment(const char* name) {
    const char* const value = std::getenv(name);
    if (value == nullptr) {
        std::fprintf(stderr, "%s is not set: run this under with_service.py\n", name);
        std::exit(2);
    }
    return value;
}

} // namespace support

namespace vfs_quilldeck {

const char* get_service_url() {
    return support::current_url().c_str();
}

} // namespace vfs_quilldeck
