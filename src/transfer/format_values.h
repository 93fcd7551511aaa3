/// Single numbers in data objects: drop effects and marks.
#pragma once

#include <objidl.h>

namespace transfer {

/// A request for the content of `format`, by default as a block of memory and as a whole.
FORMATETC format_of(UINT format, DWORD media = TYMED_HGLOBAL, LONG index = -1) noexcept;

/// The first 4 bytes that `source` gives for `format`; 0 when it gives none.
DWORD read_value(IDataObject& source, UINT format) noexcept;

/// Stores `value` under `format`, as a block that the data object takes over. What `target`
/// answers, or E_OUTOFMEMORY.
HRESULT write_value(IDataObject& target, UINT format, DWORD value) noexcept;

} // namespace transfer
