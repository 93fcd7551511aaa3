#pragma once

#include "com/memory.h"
#include "com/object.h"

#include <shlobj.h>
#include <wrl/client.h>

namespace commands {

/// Whether the platform's default folder menu calls back, so that ours need not stand in for it.
/// Found once.
bool platform_menu_calls_back();

/// The menu of items where the platform's does not call back: the entries of `item_menu_callback`,
/// and below them Delete, Rename and Properties in the states that the items' attributes allow,
/// with the platform's verbs for them.
class CItemContextMenu final : public com::object<CItemContextMenu, IContextMenu, IObjectWithSite> {
public:
    /// `data` is the data object of the items, `attributes` what the folder says of all of them.
    CItemContextMenu(HWND owner, Microsoft::WRL::ComPtr<IShellFolder> folder,
                     Microsoft::WRL::ComPtr<IDataObject> data, SFGAOF attributes,
                     com::unique_id_list first);

    HRESULT STDMETHODCALLTYPE QueryContextMenu(HMENU hmenu, UINT indexMenu, UINT idCmdFirst,
                                               UINT idCmdLast, UINT uFlags) override;
    HRESULT STDMETHODCALLTYPE InvokeCommand(CMINVOKECOMMANDINFO* pici) override;
    HRESULT STDMETHODCALLTYPE GetCommandString(UINT_PTR idCmd, UINT uType, UINT* pReserved,
                                               CHAR* pszName, UINT cchMax) override;
    HRESULT STDMETHODCALLTYPE SetSite(IUnknown* pUnkSite) override;
    HRESULT STDMETHODCALLTYPE GetSite(REFIID riid, void** ppvSite) override;

private:
    HRESULT call_back(HWND owner, UINT message, WPARAM parameter, LPARAM data);
    HRESULT rename();

    const HWND m_owner;
    const Microsoft::WRL::ComPtr<IShellFolder> m_folder;
    const Microsoft::WRL::ComPtr<IDataObject> m_object;
    const SFGAOF m_attributes;
    const com::unique_id_list m_first;
    Microsoft::WRL::ComPtr<IUnknown> m_site;
};

} // namespace commands
