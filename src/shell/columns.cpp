#include "shell/columns.h"

#include "com/guard.h"
#include "resources/string_ids.h"
#include "shell_items/display_text.h"

#include <commctrl.h>

#include <iterator>

namespace shell {

namespace {

std::wstring size_text(const PIDLDATA& record) {
    constexpr int kilobytes = 1;
    if (record.size == -1) {
        throw com::status_exception(E_FAIL);
    }
    return format_size(record.size, kilobytes, kilobytes, false);
}

template <double PIDLDATA::* Date>
std::wstring date_text(const PIDLDATA& record) {
    if (record.*Date == no_date) {
        throw com::status_exception(E_FAIL);
    }
    return format_date(record.*Date);
}

constexpr SHCOLSTATEF text_column = SHCOLSTATE_TYPE_STR | SHCOLSTATE_ONBYDEFAULT;
constexpr SHCOLSTATEF number_column = SHCOLSTATE_TYPE_INT | SHCOLSTATE_ONBYDEFAULT;
constexpr SHCOLSTATEF hidden_date_column = SHCOLSTATE_TYPE_DATE;
constexpr SHCOLSTATEF date_column = SHCOLSTATE_TYPE_DATE | SHCOLSTATE_ONBYDEFAULT;

// clang-format off
constexpr column columns[] = {
    {IDS_COLUMN_NAME, LVCFMT_LEFT, 20, text_column, storage_name,
     [](const PIDLDATA& record) { return record.get_name(); }},
    {IDS_COLUMN_TYPE, LVCFMT_LEFT, 15, text_column, storage_type,
     [](const PIDLDATA& record) { return record.get_type_text(); }},
    {IDS_COLUMN_SIZE, LVCFMT_RIGHT, 10, number_column, storage_size,
     size_text},
    {IDS_COLUMN_DATE_ACCESSED, LVCFMT_LEFT, 15, hidden_date_column, storage_access_time,
     date_text<&PIDLDATA::access_date>},
    {IDS_COLUMN_DATE_MODIFIED, LVCFMT_LEFT, 15, date_column, storage_write_time,
     date_text<&PIDLDATA::modification_date>},
};
// clang-format on

} // namespace

const column& get_column(UINT index) {
    if (index >= std::size(columns)) {
        throw com::status_exception(E_INVALIDARG);
    }
    return columns[index];
}

} // namespace shell
