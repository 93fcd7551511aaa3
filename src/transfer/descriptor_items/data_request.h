#pragma once

#include "com/media.h"

#include <objidl.h>

namespace transfer {

/// Asks a data object for its content in a format; `index` -1 is the whole. What it answers is not
/// necessarily a medium of `kind`.
inline HRESULT request(IDataObject& data, UINT format, LONG index, TYMED kind,
                       com::medium& answer) noexcept {
    FORMATETC wanted{static_cast<CLIPFORMAT>(format), nullptr, DVASPECT_CONTENT, index,
                     static_cast<DWORD>(kind)};
    return data.GetData(&wanted, answer.put());
}

} // namespace transfer
