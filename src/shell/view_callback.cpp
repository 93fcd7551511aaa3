#include "shell/view_callback.h"

namespace shell {

HRESULT CShellFolderViewCBImpl::MessageSFVCB(UINT message, WPARAM wparam, LPARAM lparam) noexcept {
    switch (message) {
    case SFVM_GETBUTTONINFO:
    case SFVM_GETBUTTONS:
        // Told to go on, and given nothing, the view shows no button of ours.
        return S_OK;
    case SFVM_GETNOTIFY:
        if (!wparam || !lparam) {
            return E_POINTER;
        }
        // Every change below this folder concerns the view. The list stays ours.
        *reinterpret_cast<const ITEMIDLIST**>(wparam) = m_folder.get();
        *reinterpret_cast<LONG*>(lparam) = SHCNE_ALLEVENTS;
        return S_OK;
    case SFVM_GETZONE:
        if (!lparam) {
            return E_POINTER;
        }
        *reinterpret_cast<DWORD*>(lparam) = URLZONE_LOCAL_MACHINE;
        return S_OK;
    default:
        return E_NOTIMPL;
    }
}

} // namespace shell
