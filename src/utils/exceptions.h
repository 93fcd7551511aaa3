/// The failures of the support and settings layers: standard exceptions with one narrow message.
#pragma once

#include <exception>
#include <string>

namespace utils {

/// A failure whose message is `where`, ": ", `what`. `where` is the full signature of the
/// operation that raises, as `std::source_location::function_name` gives it.
class utils_exception : public std::exception {
public:
    utils_exception(const std::string& where, const std::string& what);

    const char* what() const noexcept override { return message_.c_str(); }

private:
    std::string message_;
};

/// A platform call that failed. `call` is the call as it is written in the source.
class system_error_exception : public utils_exception {
public:
    /// With the system's text for an error code of `GetLastError`.
    system_error_exception(const std::string& where, const std::string& call,
                           unsigned long error_code);
    /// For a failure that has no code.
    system_error_exception(const std::string& where, const std::string& call);
};

} // namespace utils
