#pragma once

#include "com/class_ids.h"

#include <unknwn.h>

namespace transfer {

// Interfaces have no virtual destructor, by COM's own rules.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wnon-virtual-dtor"

/// What this program's own streams offer beside `IStream`, for callers who show failures
/// themselves.
struct IStreamImpl : IUnknown {
    /// From now on failures are kept instead of shown. Cannot be taken back.
    virtual HRESULT STDMETHODCALLTYPE SetSilent() = 0;
    /// Copies name and description of the last failure that was kept, cut to the lengths of the
    /// buffers, which are in characters and count a terminator. E_FAIL when either is empty.
    virtual HRESULT STDMETHODCALLTYPE GetError(LPWSTR lpzsMessage, LPWSTR lpszDescription,
                                               int nMessageLen, int nDescriptionLen) = 0;
};

#pragma GCC diagnostic pop

} // namespace transfer

template <>
constexpr const GUID& __mingw_uuidof<transfer::IStreamImpl>() {
    return com::IID_IStreamImpl;
}
