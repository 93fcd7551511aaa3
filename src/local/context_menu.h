#pragma once

#include "com/object.h"
#include "ui/gdi.h"

#include <shobjidl.h>
#include <wrl/client.h>

namespace local {

/// Two entries in the menu of local files and folders, which show the page that binds them.
class CShellContextMenu : public com::object<CShellContextMenu, IShellExtInit, IContextMenu> {
public:
    CShellContextMenu();

    HRESULT STDMETHODCALLTYPE Initialize(PCIDLIST_ABSOLUTE folder, IDataObject* data_object,
                                         HKEY key) override;
    HRESULT STDMETHODCALLTYPE QueryContextMenu(HMENU menu, UINT index, UINT first_id, UINT last_id,
                                               UINT flags) override;
    HRESULT STDMETHODCALLTYPE InvokeCommand(CMINVOKECOMMANDINFO* info) override;
    HRESULT STDMETHODCALLTYPE GetCommandString(UINT_PTR command, UINT kind, UINT* reserved,
                                               LPSTR text, UINT size) override;

private:
    Microsoft::WRL::ComPtr<IDataObject> m_data_object;
    /// The menu shows it for as long as this lives; null without memory for it.
    ui::unique_bitmap m_menu_bitmap;
};

} // namespace local
