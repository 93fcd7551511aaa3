#include "dialogs/properties/show_properties.h"

#include "com/guard.h"
#include "dialogs/properties/properties_dialog.h"
#include "ui/message.h"

#include <utility>

namespace dialogs {

namespace {

HRESULT show(shell::selection items, HWND owner, shell::properties_page page) {
    try {
        // The desktop is no owner that may be disabled.
        CPropertiesFileDlg(std::move(items), static_cast<int>(page))
            .do_modal(owner == GetDesktopWindow() ? nullptr : owner);
        return S_OK;
    } catch (...) {
        ui::show_current_failure(owner);
        return com::status_of_current_exception();
    }
}

} // namespace

HRESULT show_properties(IDataObject& items, HWND owner, shell::properties_page page) noexcept {
    return com::guard([&] {
        shell::selection selected;
        com::check(shell::get_seams().transfer.get_selection(items, selected));
        return selected.records.empty() ? E_INVALIDARG : show(std::move(selected), owner, page);
    });
}

} // namespace dialogs
