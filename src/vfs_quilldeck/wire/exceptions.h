#pragma once

#include "vfs/exceptions.h"

#include <string>
#include <utility>

namespace vfs_quilldeck {

/// A failure of the remote store: in the service's own words, or in those of the client.
class exception : public virtual vfs::exception {
public:
    exception(std::wstring name, std::wstring description)
        : name_(std::move(name)), description_(std::move(description)) {}

    std::wstring get_name() const override { return name_; }

    std::wstring get_description() const override { return description_; }

private:
    std::wstring name_;
    std::wstring description_;
};

class item_already_exists_exception : public exception, public vfs::item_already_exists_exception {
public:
    using exception::exception;
};

class item_not_found_exception : public exception, public vfs::item_not_found_exception {
public:
    using exception::exception;
};

/// The description of every failure that comes from the line and not from the service.
inline constexpr auto connection_failure_text =
    L"Please, check your internet connection or firewall settings";

} // namespace vfs_quilldeck
