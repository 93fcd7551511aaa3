#include "shell/item_properties.h"

#include "com/memory.h"
#include "shell_items/file_types.h"
#include "vfs/file.h"

#include <algorithm>
#include <iterator>

namespace shell {

namespace {

constexpr GUID shell_details = {
    0x28636aa6, 0x953d, 0x11d2, {0xb5, 0xd6, 0x00, 0xc0, 0x4f, 0xd9, 0x18, 0xd0}};
constexpr GUID property_lists = {
    0xc9944a21, 0xa406, 0x48fe, {0x82, 0x25, 0xae, 0xc7, 0xe2, 0x4c, 0x21, 0x1b}};

void put_text(VARIANT& value, const std::wstring& text) {
    value.bstrVal = SysAllocStringLen(text.data(), static_cast<UINT>(text.size()));
    if (!value.bstrVal) {
        throw com::status_exception(E_OUTOFMEMORY);
    }
    value.vt = VT_BSTR;
}

void put_size(VARIANT& value, const PIDLDATA& record) {
    if (record.size == -1) {
        throw com::status_exception(E_FAIL);
    }
    value.vt = VT_I8;
    value.llVal = record.size;
}

template <double PIDLDATA::* Date>
void put_date(VARIANT& value, const PIDLDATA& record) {
    if (record.*Date == no_date) {
        throw com::status_exception(E_FAIL);
    }
    value.vt = VT_R8;
    value.dblVal = record.*Date;
}

struct property {
    GUID fmtid;
    DWORD pid;
    bool live; ///< as the directory knows it by now
    VARTYPE type;
    void (*put)(VARIANT& value, const PIDLDATA& record);
};

constexpr property properties[] = {
    {storage_properties, storage_name, false, VT_BSTR,
     [](VARIANT& value, const PIDLDATA& record) {
         put_text(value, record.get_name());
     }},
    {storage_properties, storage_type, false, VT_BSTR,
     [](VARIANT& value, const PIDLDATA& record) {
         put_text(value, record.get_type_text());
     }},
    {shell_details, 11, false, VT_BSTR, // System.ItemType
     [](VARIANT& value, const PIDLDATA& record) {
         put_text(value, std::wstring(extension_of(record.get_name())));
     }},
    {storage_properties, storage_size, true, VT_UI8, put_size},
    {storage_properties, storage_write_time, true, VT_DATE, put_date<&PIDLDATA::modification_date>},
    {storage_properties, storage_access_time, false, VT_DATE, put_date<&PIDLDATA::access_date>},
    {storage_properties, storage_creation_time, false, VT_DATE, put_date<&PIDLDATA::creation_date>},
    {property_lists, 6, false, VT_BSTR, // the title of the preview
     [](VARIANT& value, const PIDLDATA&) {
         put_text(value, L"prop:System.ItemNameDisplay;System.ItemTypeText");
     }},
    {property_lists, 8, false, VT_BSTR, // the details of the preview
     [](VARIANT& value, const PIDLDATA&) {
         put_text(value, L"prop:System.DateModified;System.Size;System.DateAccessed");
     }},
};

void refresh(PIDLDATA& record, vfs::directory& directory) {
    try {
        const auto item = directory.find_known_item_by_id(record.get_id());
        if (const auto file = std::dynamic_pointer_cast<vfs::file>(item)) {
            record.size = file->get_size();
            record.modification_date = to_ole_date(file->get_modification_date());
        }
    } catch (...) {
        // What was known when the item was listed is better than nothing.
    }
}

} // namespace

void get_property(PIDLDATA record, const SHCOLUMNID& key,
                  const std::shared_ptr<vfs::directory>& directory, VARIANT& value) {
    const auto* const found = std::ranges::find_if(properties, [&key](const property& row) {
        return IsEqualGUID(row.fmtid, key.fmtid) && row.pid == key.pid;
    });
    if (found == std::end(properties)) {
        throw com::status_exception(E_NOTIMPL);
    }
    if (found->live && directory) {
        refresh(record, *directory);
    }
    com::variant made;
    found->put(made.get(), record);
    com::check(VariantChangeType(&made.get(), &made.get(), 0, found->type));
    com::check(VariantClear(&value));
    value = made.release();
}

} // namespace shell
