/// The failures of bindings: standard exceptions with one narrow message.
#pragma once

#include <exception>
#include <string>

namespace syncer {

/// A failure whose message is `where`, ": ", `what`. `where` is the full signature of the
/// operation that raises, as `std::source_location::function_name` gives it.
class syncer_exception : public std::exception {
public:
    syncer_exception(const std::string& where, const std::string& what)
        : message_(where + ": " + what) {}

    const char* what() const noexcept override { return message_.c_str(); }

private:
    std::string message_;
};

/// A directory that is missing and cannot be made.
class create_directory_exception : public syncer_exception {
public:
    using syncer_exception::syncer_exception;
};

/// A binding that is there already.
class duplicated_binding_exception : public syncer_exception {
public:
    using syncer_exception::syncer_exception;
};

/// A binding that is not there.
class binding_not_found_exception : public syncer_exception {
public:
    using syncer_exception::syncer_exception;
};

} // namespace syncer
