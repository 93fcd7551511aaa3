/// The failures of the file-system contracts. They are thrown by value and caught by reference;
/// callers that tell a name clash or a missing item from other failures catch the two abstract
/// types of this header, so that remote and local items stay interchangeable.
#pragma once

#include <string>

namespace vfs {

/// A failure of any item, directory, file or client.
class exception {
public:
    /// Which operation failed: the caption of a message.
    virtual std::wstring get_name() const = 0;
    /// What went wrong: the text of a message.
    virtual std::wstring get_description() const = 0;

    virtual ~exception() = default;

protected:
    exception() = default;
    exception(const exception&) = default;
    exception& operator=(const exception&) = default;
};

/// A new name is taken already.
class item_already_exists_exception : public virtual exception {};

/// The item that was asked for is not there.
class item_not_found_exception : public virtual exception {};

} // namespace vfs
