/// The failures of settings files: standard exceptions with one narrow message.
#pragma once

#include <exception>
#include <string>

namespace serializer {

/// A file that cannot be opened or written. The message is `where`, ": ", `what`; `where` is the
/// full signature of the operation that raises, as `std::source_location::function_name` gives it.
class serializer_exception : public std::exception {
public:
    serializer_exception(const std::string& where, const std::string& what)
        : message_(where + ": " + what) {}

    const char* what() const noexcept override { return message_.c_str(); }

private:
    std::string message_;
};

/// A text that breaks the grammar.
class wrong_format_exception : public serializer_exception {
public:
    using serializer_exception::serializer_exception;
};

} // namespace serializer
