#include "commands/menu_entries.h"

#include "com/guard.h"
#include "ui/strings.h"

#include <string>

namespace commands {

namespace {

void insert(HMENU menu, UINT position, const MENUITEMINFOW& entry) {
    if (!InsertMenuItemW(menu, position, TRUE, &entry)) {
        throw com::status_exception(E_FAIL);
    }
}

} // namespace

void insert_entry(HMENU menu, UINT position, UINT id, UINT text, UINT state) {
    std::wstring words = ui::load_string(text);
    MENUITEMINFOW entry{};
    entry.cbSize = sizeof(entry);
    entry.fMask = MIIM_ID | MIIM_STRING | MIIM_STATE;
    entry.wID = id;
    entry.fState = state;
    entry.dwTypeData = words.data();
    insert(menu, position, entry);
}

void insert_separator(HMENU menu, UINT position) {
    MENUITEMINFOW entry{};
    entry.cbSize = sizeof(entry);
    entry.fMask = MIIM_FTYPE;
    entry.fType = MFT_SEPARATOR;
    insert(menu, position, entry);
}

} // namespace commands
