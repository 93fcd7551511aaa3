/// The details side of a folder.
#include "com/memory.h"
#include "shell/columns.h"
#include "shell/item_properties.h"
#include "shell/shell_folder.h"
#include "shell_items/id_list_bytes.h"
#include "shell_items/record_in_place.h"
#include "ui/strings.h"

namespace shell {

using com::guard;

namespace {

/// The last record of a list. Throws E_INVALIDARG for null or a list whose last entry is no record.
class last_record : public record_in_place {
public:
    explicit last_record(const ITEMIDLIST* list) : record_in_place(last_entry_of(list)) {
        if (!*this) {
            throw com::status_exception(E_INVALIDARG);
        }
    }
};

} // namespace

HRESULT CShellFolderImpl::GetDefaultSearchGUID(GUID*) {
    return E_NOTIMPL;
}

HRESULT CShellFolderImpl::EnumSearches(IEnumExtraSearch** result) {
    return guard([&] {
        com::cleared(result);
        return E_NOTIMPL;
    });
}

HRESULT CShellFolderImpl::GetDefaultColumn(DWORD, ULONG* sort, ULONG* display) {
    return guard([&] {
        com::required(sort) = 0;
        com::required(display) = 0;
    });
}

HRESULT CShellFolderImpl::GetDefaultColumnState(UINT index, SHCOLSTATEF* state) {
    return guard([&] { com::cleared(state) = get_column(index).state; });
}

HRESULT CShellFolderImpl::MapColumnToSCID(UINT index, SHCOLUMNID* key) {
    return guard([&] { com::cleared(key) = {storage_properties, get_column(index).property}; });
}

HRESULT CShellFolderImpl::GetDetailsOf(PCUITEMID_CHILD list, UINT index, SHELLDETAILS* details) {
    return guard([&] {
        SHELLDETAILS& result = com::cleared(details);
        const column& shown = get_column(index);
        const std::wstring text =
            list ? shown.get_text(*last_record(list)) : ui::load_string(shown.title);
        result.str.pOleStr = com::duplicate_string(text).release();
        result.str.uType = STRRET_WSTR;
        result.fmt = shown.alignment;
        result.cxChar = list ? 0 : shown.width;
    });
}

HRESULT CShellFolderImpl::GetDetailsEx(PCUITEMID_CHILD list, const SHCOLUMNID* key,
                                       VARIANT* value) {
    return guard([&] {
        VARIANT& result = com::required(value);
        get_property(*last_record(list), com::required(key), get_directory(), result);
    });
}

} // namespace shell
