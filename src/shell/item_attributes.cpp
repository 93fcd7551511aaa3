#include "shell/item_attributes.h"

#include "shell_items/id_list_bytes.h"
#include "shell_items/item_id_list.h"

namespace shell {

namespace {

enum fact : unsigned {
    ordinary = 0x01, ///< is no fixed directory
    live = 0x02,
    directory = 0x04,
    file = 0x08,
    shared = 0x10,
    with_subfolders = 0x20,
    for_files = 0x40, ///< the host is not the file manager
};

struct rule {
    unsigned facts; ///< all of them must hold
    SFGAOF flags;
};

constexpr rule rules[] = {
    {0, SFGAO_HASPROPSHEET},
    {ordinary, SFGAO_CANDELETE},
    {ordinary | live, SFGAO_CANCOPY | SFGAO_CANMOVE | SFGAO_CANRENAME},
    {directory | for_files, SFGAO_FILESYSTEM | SFGAO_FILESYSANCESTOR | SFGAO_STORAGE},
    {directory | live, SFGAO_FOLDER | SFGAO_BROWSABLE | SFGAO_DROPTARGET},
    {directory | live | shared, SFGAO_SHARE},
    {directory | live | with_subfolders, SFGAO_HASSUBFOLDER},
    {file | for_files, SFGAO_FILESYSTEM},
    {file, SFGAO_STREAM},
};

} // namespace

SFGAOF get_attributes(const PIDLDATA& record, bool in_file_manager) noexcept {
    const unsigned facts =
        (record.is_root_directory ? 0U : ordinary) | (record.is_live() ? live : 0U) |
        (record.is_directory() ? directory : 0U) | (record.is_file() ? file : 0U) |
        (record.is_shared ? shared : 0U) | (record.has_subfolders ? with_subfolders : 0U) |
        (in_file_manager ? 0U : for_files);
    SFGAOF flags = 0;
    for (const rule& row : rules) {
        if ((facts & row.facts) == row.facts) {
            flags |= row.flags;
        }
    }
    return flags;
}

SFGAOF get_attributes(const ITEMIDLIST* list, bool in_file_manager) noexcept {
    const auto entry = first_entry_of(list);
    if (entry.empty()) {
        return ~SFGAOF{0};
    }
    const auto record = read_record(entry);
    return record ? get_attributes(*record, in_file_manager) : 0;
}

} // namespace shell
