#pragma once

#include "transfer/wrappers/source_directory.h"

#include <string>

namespace transfer {

/// The items that a drop or a paste brings, as the children of a directory.
class CClipboardWrapper : public CSourceDirectory {
public:
    /// What the source offers and no store can take, as the lines of a message; empty when nothing
    /// was left out since the last call. Such items are nowhere among the children. All of them are
    /// known once each directory has been listed.
    virtual std::wstring take_refusals() = 0;

protected:
    std::wstring place() const override { return selection_place; }
};

} // namespace transfer
