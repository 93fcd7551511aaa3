#pragma once

#include "com/memory.h"
#include "com/object.h"
#include "com/sited.h"

#include <shlobj.h>
#include <wrl/client.h>

namespace commands {

/// Whether the platform's default folder menu calls back, so that ours need not stand in for it.
/// Found once.
bool platform_menu_calls_back();

/// The menu of items where the platform's does not call back: the entries of `item_menu_callback`,
/// and below them Delete, Rename and Properties in the states that the items' attributes allow,
/// with the platform's verbs for them.
class CItemContextMenu final : public com::object<CItemContextMenu, IContextMenu, com::sited> {
public:
    /// The attributes of the items that the states depend on.
    static constexpr SFGAOF needed_attributes =
        SFGAO_CANDELETE | SFGAO_CANRENAME | SFGAO_HASPROPSHEET;

    /// `data` is the data object of the items, `attributes` what the folder says of all of them,
    /// `first` the list of the first one.
    CItemContextMenu(HWND owner, Microsoft::WRL::ComPtr<IDataObject> data, SFGAOF attributes,
                     com::unique_id_list first);

    HRESULT STDMETHODCALLTYPE QueryContextMenu(HMENU hmenu, UINT indexMenu, UINT idCmdFirst,
                                               UINT idCmdLast, UINT uFlags) override;
    HRESULT STDMETHODCALLTYPE InvokeCommand(CMINVOKECOMMANDINFO* pici) override;
    HRESULT STDMETHODCALLTYPE GetCommandString(UINT_PTR idCmd, UINT uType, UINT* pReserved,
                                               CHAR* pszName, UINT cchMax) override;

private:
    HRESULT call_back(HWND owner, UINT message, WPARAM parameter, LPARAM data);

    bool is_allowed(SFGAOF needed) const { return (m_attributes & needed) != 0; }

    void insert_standard_entries(HMENU menu, UINT position, UINT first_id) const;
    /// Begins it in the view that shows the items: that of the site, or of the window `owner`.
    /// E_FAIL where there is none.
    HRESULT rename(HWND owner);

    const HWND m_owner;
    const Microsoft::WRL::ComPtr<IDataObject> m_object;
    const SFGAOF m_attributes;
    const com::unique_id_list m_first;
};

} // namespace commands
