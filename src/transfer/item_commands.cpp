#include "transfer/item_commands.h"

#include "com/guard.h"
#include "transfer/data_object/data_object.h"
#include "transfer/delete_worker.h"
#include "transfer/opening/open_worker.h"
#include "transfer/restore.h"
#include "ui/message.h"

#include <wrl/client.h>

namespace transfer {

namespace {

/// The object behind the interface, which no other class implements.
const selection& selection_of(IDataObject& items) {
    Microsoft::WRL::ComPtr<IDataObjectImpl> ours;
    com::check(items.QueryInterface(IID_PPV_ARGS(&ours)));
    const selection& selected = static_cast<CDataObjectImpl&>(*ours.Get()).get_selection();
    if (!selected.folder) {
        throw com::status_exception(E_UNEXPECTED);
    }
    return selected;
}

} // namespace

HRESULT read_items(IDataObject& items, selection& result) noexcept {
    return com::guard([&] { result = selection_of(items); });
}

HRESULT open_items(IDataObject& items, HWND owner, HKEY verb_key, bool open_with) noexcept {
    return com::guard(
        [&] { return open_selection(selection_of(items), owner, verb_key, open_with); });
}

HRESULT remove_items(IDataObject& items, HWND owner) noexcept {
    return com::guard([&] { return delete_selection(selection_of(items), owner, false); });
}

HRESULT restore_items(IDataObject& items, HWND owner) noexcept {
    return com::guard([&] {
        const selection& selected = selection_of(items);
        try {
            return restore_selection(selected);
        } catch (...) {
            ui::show_current_failure(owner);
            return E_FAIL;
        }
    });
}

} // namespace transfer
