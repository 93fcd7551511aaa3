#pragma once

#include "transfer/local_items/local_path.h"

#include <string>
#include <utility>

namespace transfer {

/// What the two kinds of local items have in common: a path, which is not looked at before it is
/// needed.
class CHDROPItem {
public:
    explicit CHDROPItem(std::wstring path) : m_path(std::move(path)) {}

    CHDROPItem(const CHDROPItem&) = delete;
    CHDROPItem& operator=(const CHDROPItem&) = delete;
    virtual ~CHDROPItem() = default;

protected:
    const std::wstring& path() const noexcept { return m_path; }

    std::wstring name() const { return last_element(m_path); }

private:
    const std::wstring m_path;
};

} // namespace transfer
