#pragma once

#include "com/class_ids.h"

#include <oaidl.h>

namespace shell {

// Interfaces have no virtual destructor, by COM's own rules.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wnon-virtual-dtor"

/// What the objects of this module ask of a folder of the drive.
struct IShellFolderImpl : IUnknown {
    /// Connects the folder, without a login dialog, and makes `ppObject` a VT_BYREF whose address
    /// is that of the folder's `vfs::item_ptr`; it is good for as long as the folder lives. `hWnd`
    /// is the owner of messages.
    virtual HRESULT STDMETHODCALLTYPE GetObject(HWND hWnd, VARIANT* ppObject) = 0;
};

#pragma GCC diagnostic pop

} // namespace shell

template <>
constexpr const GUID& __mingw_uuidof<shell::IShellFolderImpl>() {
    return com::IID_IShellFolderImpl;
}
