#include "dialogs/drive/properties_drive.h"

#include "com/guard.h"
#include "dialogs/drive/drive_page.h"
#include "resources/string_ids.h"
#include "ui/strings.h"

#include <memory>

namespace dialogs {

HRESULT STDMETHODCALLTYPE CPropertiesDriveDlg::Initialize(PCIDLIST_ABSOLUTE, IDataObject*, HKEY) {
    return S_OK;
}

HRESULT STDMETHODCALLTYPE CPropertiesDriveDlg::AddPages(LPFNSVADDPROPSHEETPAGE add,
                                                        LPARAM parameter) {
    return com::guard(E_OUTOFMEMORY, [&] {
        com::required(add);
        const HPROPSHEETPAGE page = ui::property_page::create_page(
            std::make_unique<CDrivePageDlg>(static_cast<IShellExtInit&>(*this)),
            ui::load_string(IDS_DRIVE_GENERAL));
        if (!add(page, parameter)) {
            DestroyPropertySheetPage(page);
            return E_FAIL;
        }
        return S_OK;
    });
}

HRESULT STDMETHODCALLTYPE CPropertiesDriveDlg::ReplacePage(EXPPS, LPFNSVADDPROPSHEETPAGE, LPARAM) {
    return E_NOTIMPL;
}

} // namespace dialogs
