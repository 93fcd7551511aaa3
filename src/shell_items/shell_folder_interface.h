#pragma once

#include "com/class_ids.h"
#include "vfs/directory.h"

#include <oaidl.h>

#include <memory>

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

/// The live item behind `folder`, any interface of a folder of the drive, by its `GetObject`.
/// Throws a status: that of `GetObject`, or E_NOINTERFACE for a foreign folder.
vfs::item_ptr get_item(IUnknown& folder, HWND owner);
/// The same of a folder that stands on a directory. Throws E_FAIL for any other.
std::shared_ptr<vfs::directory> get_directory(IUnknown& folder, HWND owner);

} // namespace shell

template <>
constexpr const GUID& __mingw_uuidof<shell::IShellFolderImpl>() {
    return com::IID_IShellFolderImpl;
}
