#pragma once

#include "vfs/exceptions.h"

#include <string>
#include <utility>

namespace transfer {

/// What a transfer itself finds wrong with what it moves.
class copy_failure final : public vfs::exception {
public:
    explicit copy_failure(std::wstring description) : m_description(std::move(description)) {}

    std::wstring get_name() const override { return L"Copy failed"; }

    std::wstring get_description() const override { return m_description; }

private:
    std::wstring m_description;
};

} // namespace transfer
