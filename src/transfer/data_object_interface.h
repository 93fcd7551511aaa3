#pragma once

#include "com/class_ids.h"

#include <shtypes.h>
#include <unknwn.h>

namespace transfer {

// Interfaces have no virtual destructor, by COM's own rules.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wnon-virtual-dtor"

/// What this program's own data objects offer beside `IDataObject`: where their items are from. It
/// is not marshalled, so that only those of this apartment are known by it.
struct IDataObjectImpl : IUnknown {
    /// The absolute list of the drive, and the list from there to the folder whose items are
    /// selected. The caller frees both with CoTaskMemFree.
    virtual HRESULT STDMETHODCALLTYPE GetPath(PIDLIST_ABSOLUTE* pidlRoot,
                                              PIDLIST_RELATIVE* pidl) = 0;
};

#pragma GCC diagnostic pop

} // namespace transfer

template <>
constexpr const GUID& __mingw_uuidof<transfer::IDataObjectImpl>() {
    return com::IID_IDataObjectImpl;
}
