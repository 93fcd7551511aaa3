#include "dialogs/sync/item_sync_page.h"

#include "com/guard.h"
#include "com/memory.h"
#include "dialogs/properties/sync_page.h"
#include "resources/string_ids.h"
#include "resources/sync_ids.h"
#include "shell_items/local_name.h"
#include "syncer/binding_paths.h"
#include "ui/strings.h"

#include <shlobj.h>

#include <algorithm>
#include <array>
#include <filesystem>
#include <utility>

namespace dialogs {

namespace {

constexpr sync_page_controls controls = {
    .other_end = IDC_ITEM_SYNC_OTHER_END,
    .browse = IDC_ITEM_SYNC_BROWSE,
    .permanent = IDC_ITEM_SYNC_PERMANENT,
    .full_sync = IDC_ITEM_SYNC_FULL,
    .backup = IDC_ITEM_SYNC_BACKUP,
    .manage = IDC_ITEM_SYNC_MANAGE,
    .backup_notice = IDC_ITEM_SYNC_BACKUP_NOTICE,
    .full_sync_notice = IDC_ITEM_SYNC_FULL_NOTICE,
    .hidden_notice = IDC_ITEM_SYNC_HIDDEN_NOTICE,
};

constexpr sync_page_ends ends = {
    .own = &syncer::remote_path_of, .other = &syncer::local_path_of, .separator = L'\\'};

/// A place on a volume with a letter; a list of the shell's own has no path, and a share none that
/// can be bound.
bool is_drive_path(const std::wstring& path) {
    return path.size() >= 3 && path[2] == L'\\';
}

} // namespace

std::unique_ptr<CPropertiesPageDlg> create_sync_page(IPropertiesDialog& owner, int mode) {
    return std::make_unique<CPropertiesItemSyncDlg>(owner, mode);
}

CPropertiesItemSyncDlg::CPropertiesItemSyncDlg(IPropertiesDialog& owner, int mode) noexcept
    : CPropertiesPageDlg(IDD_ITEM_SYNC, owner), CSyncPage(controls, ends, mode) {}

HRESULT CPropertiesItemSyncDlg::load() {
    EnableWindow(handle(), FALSE);
    std::array<wchar_t, MAX_PATH> documents{};
    if (FAILED(SHGetFolderPathW(nullptr, CSIDL_PERSONAL, nullptr, SHGFP_TYPE_CURRENT,
                                documents.data()))) {
        return E_FAIL;
    }
    m_documents = documents.data();
    m_can_ask = true;
    ask_when_seen((GetWindowLongPtrW(handle(), GWL_STYLE) & WS_VISIBLE) != 0);
    return S_OK;
}

void CPropertiesItemSyncDlg::ask_when_seen(bool seen) {
    if (!seen || !std::exchange(m_can_ask, false)) {
        return;
    }
    try {
        ask_store([this, folder = get_selection().folder]() -> std::function<void()> {
            return [this, path = folder->get_path()] {
                show_items(path);
            };
        });
    } catch (...) {
        show_failure();
    }
}

std::optional<LRESULT> CPropertiesItemSyncDlg::on_message(UINT message, WPARAM wparam,
                                                          LPARAM lparam) {
    if (message == WM_SHOWWINDOW) {
        ask_when_seen(wparam != 0);
    }
    if (handle_message(message)) {
        return 0;
    }
    return CPropertiesPageDlg::on_message(message, wparam, lparam);
}

void CPropertiesItemSyncDlg::show_items(const std::wstring& folder) {
    const std::size_t begin = std::min(folder.find_first_not_of(L'/'), folder.size());
    m_folder = syncer::join_path(ui::load_string(IDS_STORE), folder.substr(begin), L'/');
    std::vector<sync_entry> entries;
    for (const shell::PIDLDATA& record : get_selection().records) {
        const std::wstring name = record.get_name();
        entries.push_back({.is_directory = record.is_directory(),
                           .path = syncer::join_path(m_folder, name, L'/'),
                           .former_path = {},
                           .name = name,
                           .bindings = {}});
    }
    const bool single = entries.size() == 1;
    std::wstring local = m_documents;
    if (single) {
        local = syncer::join_path(std::move(local), entries.front().name, L'\\');
    }
    show_entries(std::move(entries), std::move(local));
    EnableWindow(handle(), TRUE);
}

std::optional<std::wstring> CPropertiesItemSyncDlg::browse() {
    ITEMIDLIST* drives = nullptr;
    com::check(SHGetSpecialFolderLocation(nullptr, CSIDL_DRIVES, &drives));
    const com::unique_id_list root(drives);
    const std::wstring title = ui::load_string(IDS_SELECT_FOLDER);
    std::array<wchar_t, MAX_PATH> name{};
    BROWSEINFOW question{};
    question.hwndOwner = GetAncestor(handle(), GA_ROOT);
    question.pidlRoot = root.get();
    question.pszDisplayName = name.data();
    question.lpszTitle = title.c_str();
    question.ulFlags = BIF_NEWDIALOGSTYLE | BIF_NONEWFOLDERBUTTON;
    const com::unique_id_list chosen(SHBrowseForFolderW(&question));
    if (!chosen) {
        return std::nullopt;
    }
    std::array<wchar_t, MAX_PATH> path{};
    if (!SHGetPathFromIDListW(chosen.get(), path.data()) || !is_drive_path(path.data())) {
        refuse_path();
        return std::nullopt;
    }
    return with_leaf(path.data());
}

std::optional<std::wstring> CPropertiesItemSyncDlg::chosen_folder(const std::wstring& text) const {
    std::wstring folder = is_single() ? std::filesystem::path(text).parent_path().native() : text;
    return is_drive_path(folder) ? std::optional(std::move(folder)) : std::nullopt;
}

syncer::binding CPropertiesItemSyncDlg::bind(const sync_entry& entry,
                                             const std::wstring& folder) const {
    syncer::binding made;
    // Checked for a file too, whose name stays as the store has it.
    const std::wstring local = shell::local_name(entry.name);
    if (entry.is_directory) {
        made.dir_remote = entry.path;
        made.dir_local = syncer::join_path(folder, local, L'\\');
    } else {
        made.dir_remote = m_folder;
        made.dir_local = folder;
        made.filename = entry.name;
    }
    return made;
}

void CPropertiesItemSyncDlg::update_entries(std::vector<sync_entry>& entries) const {
    const std::vector<shell::PIDLDATA>& records = get_selection().records;
    for (std::size_t i = 0; i < entries.size() && i < records.size(); ++i) {
        sync_entry& entry = entries[i];
        const std::wstring name = records[i].get_name();
        if (name != entry.name) {
            if (entry.former_path.empty()) {
                entry.former_path = entry.path;
            }
            entry.name = name;
            entry.path = syncer::join_path(m_folder, name, L'/');
        }
    }
}

void CPropertiesItemSyncDlg::follow(syncer::binding& moved, const sync_entry& entry) const {
    if (entry.is_directory) {
        moved.dir_remote = entry.path;
    } else {
        moved.filename = entry.name;
    }
}

} // namespace dialogs
