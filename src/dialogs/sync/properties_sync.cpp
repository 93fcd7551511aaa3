#include "dialogs/sync/properties_sync.h"

#include "com/guard.h"
#include "dialogs/sync/local_sync_page.h"
#include "resources/string_ids.h"
#include "shell_items/sync_page_mode.h"
#include "ui/strings.h"

#include <memory>

namespace dialogs {

HRESULT STDMETHODCALLTYPE CPropertiesSyncDlg::Initialize(PCIDLIST_ABSOLUTE, IDataObject* items,
                                                         HKEY) {
    m_items = items;
    return items ? S_OK : E_INVALIDARG;
}

HRESULT STDMETHODCALLTYPE CPropertiesSyncDlg::AddPages(LPFNSVADDPROPSHEETPAGE add,
                                                       LPARAM parameter) {
    return com::guard([&] {
        com::required(add);
        if (!m_items) {
            return E_UNEXPECTED;
        }
        const HPROPSHEETPAGE page = ui::property_page::create_page(
            std::make_unique<CLocalSyncPageDlg>(static_cast<IShellExtInit&>(*this), *m_items.Get(),
                                                shell::get_sync_page_mode()),
            ui::load_string(IDS_LOCAL_SYNC_PAGE));
        if (!add(page, parameter)) {
            DestroyPropertySheetPage(page);
            return E_FAIL;
        }
        return S_OK;
    });
}

HRESULT STDMETHODCALLTYPE CPropertiesSyncDlg::ReplacePage(EXPPS, LPFNSVADDPROPSHEETPAGE, LPARAM) {
    return E_NOTIMPL;
}

} // namespace dialogs
