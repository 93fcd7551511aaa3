#pragma once

#include "vfs/exceptions.h"

#include <initializer_list>
#include <string>
#include <utility>

namespace transfer {

/// A failure of the sources of a transfer that are no remote store. A value.
class CWrapperException : public virtual vfs::exception {
public:
    CWrapperException(std::wstring name, std::wstring description)
        : m_name(std::move(name)), m_description(std::move(description)) {}

    std::wstring get_name() const override { return m_name; }

    std::wstring get_description() const override { return m_description; }

private:
    std::wstring m_name;
    std::wstring m_description;
};

/// The same for an item that is not there, so that callers tell it from other failures as they do
/// with remote items.
class CWrapperNotFoundException final : public CWrapperException,
                                        public vfs::item_not_found_exception {
public:
    using CWrapperException::CWrapperException;
};

/// The name of failures that a caller should not have caused.
inline constexpr auto internal_error = L"Internal error";

/// `format` with the values in its places %1%, %2%, ...
std::wstring filled(const wchar_t* format, std::initializer_list<std::wstring> values);

/// The word for a `vfs::seek_origin` in messages.
std::wstring origin_name(int origin);

} // namespace transfer
