#pragma once

#include "com/object.h"

#include <shobjidl.h>

namespace dialogs {

/// The property sheet extension of the drive: adds the page "General" to its properties. What it is
/// initialized with does not matter, as there is one drive.
class CPropertiesDriveDlg final
    : public com::object<CPropertiesDriveDlg, IShellExtInit, IShellPropSheetExt> {
public:
    HRESULT STDMETHODCALLTYPE Initialize(PCIDLIST_ABSOLUTE folder, IDataObject* items,
                                         HKEY key) override;
    HRESULT STDMETHODCALLTYPE AddPages(LPFNSVADDPROPSHEETPAGE add, LPARAM parameter) override;
    HRESULT STDMETHODCALLTYPE ReplacePage(EXPPS page, LPFNSVADDPROPSHEETPAGE replace,
                                          LPARAM parameter) override;
};

} // namespace dialogs
