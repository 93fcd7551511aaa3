#include "utils/exceptions.h"

#include <windows.h>

#include <array>

namespace utils {

namespace {

std::string system_text(unsigned long error_code) {
    std::array<char, 1024> text{};
    const DWORD length =
        FormatMessageA(FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS, nullptr,
                       error_code, 0, text.data(), static_cast<DWORD>(text.size()), nullptr);
    return length == 0 ? "Unknown error" : std::string(text.data(), length);
}

} // namespace

utils_exception::utils_exception(const std::string& where, const std::string& what)
    : message_(where + ": " + what) {}

system_error_exception::system_error_exception(const std::string& where, const std::string& call,
                                               unsigned long error_code)
    : utils_exception(where, call + " call returned error: " + system_text(error_code)) {}

system_error_exception::system_error_exception(const std::string& where, const std::string& call)
    : utils_exception(where, call + " call returned error") {}

} // namespace utils
