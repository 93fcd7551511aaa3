#pragma once

#include "shell/item_properties.h"
#include "shell_items/item_record.h"

#include <shobjidl.h>

#include <string>

namespace shell {

/// One column of the details view.
struct column {
    UINT title; ///< number of the text
    int alignment;
    int width; ///< in average characters
    SHCOLSTATEF state;
    storage_property property;
    /// The cell of a record. Throws E_FAIL for an empty one.
    std::wstring (*get_text)(const PIDLDATA& record);
};

/// Throws E_INVALIDARG for a number that no column has.
const column& get_column(UINT index);

} // namespace shell
