#include "dialogs/sync/local_sync_page.h"

#include "com/class_ids.h"
#include "com/memory.h"
#include "dialogs/login/sign_in.h"
#include "resources/string_ids.h"
#include "resources/sync_ids.h"
#include "shell_items/item_id_list.h"
#include "shell_items/selected_paths.h"
#include "syncer/binding_paths.h"
#include "ui/strings.h"
#include "utils/module.h"
#include "vfs/directory.h"
#include "vfs_quilldeck/session/session.h"
#include "vfs_quilldeck/session/session_objects.h"

#include <shlobj.h>

#include <algorithm>
#include <array>
#include <filesystem>

namespace dialogs {

namespace {

/// Posted by the page to itself, so that the sheet is there before anything is asked.
constexpr UINT WM_LOAD = WM_USER + 1;

constexpr sync_page_controls controls = {
    .other_end = IDC_LOCAL_SYNC_OTHER_END,
    .browse = IDC_LOCAL_SYNC_BROWSE,
    .permanent = IDC_LOCAL_SYNC_PERMANENT,
    .full_sync = IDC_LOCAL_SYNC_FULL,
    .backup = IDC_LOCAL_SYNC_BACKUP,
    .manage = IDC_LOCAL_SYNC_MANAGE,
    .backup_notice = IDC_LOCAL_SYNC_BACKUP_NOTICE,
    .full_sync_notice = IDC_LOCAL_SYNC_FULL_NOTICE,
    .hidden_notice = IDC_LOCAL_SYNC_HIDDEN_NOTICE,
};

constexpr sync_page_ends ends = {
    .own = &syncer::local_path_of, .other = &syncer::remote_path_of, .separator = L'/'};

/// The first element of every remote path.
constexpr std::wstring_view store_name = L"Quilldeck";

/// Of a volume or a share, which have no name of their own in their path, what stands for them.
std::wstring leaf_of(const std::wstring& path) {
    const std::size_t end = path.find_last_not_of(L"\\/:") + 1;
    const std::size_t begin = path.find_last_of(L"\\/:", end == 0 ? 0 : end - 1);
    return path.substr(begin == std::wstring::npos ? 0 : begin + 1,
                       end - (begin == std::wstring::npos ? 0 : begin + 1));
}

std::vector<sync_entry> make_entries(IDataObject& items) {
    std::vector<sync_entry> entries;
    for (std::wstring& path : shell::selected_paths(items)) {
        const bool twice = std::ranges::any_of(
            entries, [&](const sync_entry& known) { return syncer::same_path(known.path, path); });
        if (!twice) {
            entries.push_back({.is_directory = PathIsDirectoryW(path.c_str()) != FALSE,
                               .path = path,
                               .former_path = {},
                               .name = leaf_of(path),
                               .bindings = {}});
        }
    }
    return entries;
}

/// The first folder at the top of the store, where what is bound goes by default. Two requests.
std::wstring find_default_folder() {
    const auto root = std::dynamic_pointer_cast<vfs::directory>(
        vfs_quilldeck::get_client(utils::own_module())->get_root());
    std::wstring path = L"My Documents";
    if (root) {
        const std::vector<vfs::item_ptr> items = root->get_items();
        const auto found = std::ranges::find_if(items, [](const vfs::item_ptr& item) {
            return std::dynamic_pointer_cast<vfs::directory>(item) != nullptr;
        });
        if (found != items.end()) {
            path = (*found)->get_path();
        }
    }
    path.erase(0, path.find_first_not_of(L'/'));
    return syncer::join_path(std::wstring(store_name), path, L'/');
}

com::unique_id_list parse_drive() {
    std::array<wchar_t, 39> id{};
    StringFromGUID2(com::CLSID_ShellFolderImpl, id.data(), static_cast<int>(id.size()));
    const std::wstring name =
        std::wstring(L"::{20D04FE0-3AEA-1069-A2D8-08002B30309D}\\::") + id.data();
    ITEMIDLIST* list = nullptr;
    com::check(SHParseDisplayName(name.c_str(), nullptr, &list, 0, nullptr));
    return com::unique_id_list(list);
}

/// A list of records as a path.
std::wstring path_of(const ITEMIDLIST* list) {
    std::wstring path;
    const shell::CItemIDList items(list, false);
    for (const shell::PIDLDATA& record : items.records()) {
        path = syncer::join_path(std::move(path), record.get_name(), L'/');
    }
    return path;
}

} // namespace

CLocalSyncPageDlg::CLocalSyncPageDlg(IUnknown& extension, IDataObject& items, int mode)
    : property_page(IDD_LOCAL_SYNC), CSyncPage(controls, ends, mode), m_extension(&extension),
      m_items(&items) {}

bool CLocalSyncPageDlg::on_init() {
    PostMessageW(handle(), WM_LOAD, 0, 0);
    return true;
}

bool CLocalSyncPageDlg::on_command(int id, int code) {
    return handle_command(id, code);
}

std::optional<LRESULT> CLocalSyncPageDlg::on_message(UINT message, WPARAM wparam, LPARAM lparam) {
    // A number that the platform gives a meaning too, but only where the dialog procedure has none.
    if (message == WM_LOAD) {
        load();
        return 0;
    }
    if (handle_message(message)) {
        return 0;
    }
    return property_page::on_message(message, wparam, lparam);
}

void CLocalSyncPageDlg::load() {
    try {
        utils::named_mutex mutex(vfs_quilldeck::login_mutex_name);
        if (!ensure_logged_in(mutex, GetParent(handle()))) {
            EnableWindow(handle(), FALSE);
            return;
        }
        show_entries(make_entries(*m_items.Get()), {});
    } catch (...) {
        show_failure();
        EnableWindow(handle(), FALSE);
        return;
    }
    try {
        ask_for_default_folder();
    } catch (...) {
        show_failure();
    }
}

void CLocalSyncPageDlg::ask_for_default_folder() {
    if (is_single() && get_entries().front().bindings.size() == 1) {
        return;
    }
    ask_store([this]() -> std::function<void()> {
        return [this, folder = find_default_folder()] {
            set_default_other_end(with_leaf(folder));
        };
    });
}

std::optional<std::wstring> CLocalSyncPageDlg::browse() {
    const com::unique_id_list root = parse_drive();
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
    // Nothing behind the root is the store itself.
    const std::wstring path = path_of(ILFindChild(root.get(), chosen.get()));
    return with_leaf(syncer::join_path(std::wstring(store_name), path, L'/'));
}

std::optional<std::wstring> CLocalSyncPageDlg::chosen_folder(const std::wstring& text) const {
    std::wstring path = text;
    std::ranges::replace(path, L'\\', L'/');
    if (is_single()) {
        path.resize(std::min(path.rfind(L'/'), path.size()));
        if (path.size() == text.size()) {
            return std::nullopt;
        }
    }
    if (path != store_name && !path.starts_with(std::wstring(store_name) + L'/')) {
        return std::nullopt;
    }
    return path;
}

syncer::binding CLocalSyncPageDlg::bind(const sync_entry& entry, const std::wstring& folder) const {
    syncer::binding made;
    if (entry.is_directory) {
        made.dir_remote = syncer::join_path(folder, entry.name, L'/');
        made.dir_local = entry.path;
    } else {
        made.dir_remote = folder;
        made.dir_local = std::filesystem::path(entry.path).parent_path();
        made.filename = entry.name;
    }
    return made;
}

} // namespace dialogs
