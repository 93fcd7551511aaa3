#pragma once

#include "com/object.h"

#include <shobjidl.h>
#include <wrl/client.h>

namespace dialogs {

/// The property sheet extension of local files and folders: adds the page that binds them. It keeps
/// what it was initialized with, and begins its page in the mode of the thread.
class CPropertiesSyncDlg final
    : public com::object<CPropertiesSyncDlg, IShellExtInit, IShellPropSheetExt> {
public:
    HRESULT STDMETHODCALLTYPE Initialize(PCIDLIST_ABSOLUTE folder, IDataObject* items,
                                         HKEY key) override;
    HRESULT STDMETHODCALLTYPE AddPages(LPFNSVADDPROPSHEETPAGE add, LPARAM parameter) override;
    HRESULT STDMETHODCALLTYPE ReplacePage(EXPPS page, LPFNSVADDPROPSHEETPAGE replace,
                                          LPARAM parameter) override;

private:
    Microsoft::WRL::ComPtr<IDataObject> m_items;
};

} // namespace dialogs
