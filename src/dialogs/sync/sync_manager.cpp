#include "dialogs/sync/sync_manager.h"

#include "com/guard.h"
#include "dialogs/sync/sync_failure.h"
#include "resources/resource_ids.h"
#include "resources/sync_ids.h"
#include "syncer/manager.h"
#include "ui/message.h"
#include "ui/placement.h"
#include "utils/module.h"
#include "vfs_quilldeck/session/session.h"

#include <commctrl.h>

#include <iterator>

namespace dialogs {

namespace {

struct column {
    const wchar_t* title;
    int width; ///< in pixels of a screen of 96 dots an inch
};

constexpr column columns[] = {{L"File Name", 150}, {L"File Location", 200}, {L"QD Location", 160}};

enum column_index : int { file_name, file_location, store_location };

bool is_signed_in() {
    return vfs_quilldeck::is_logged_in(utils::own_module());
}

std::wstring user_name() {
    return vfs_quilldeck::get_user_info(utils::own_module()).user_name;
}

HICON load_icon(int width, int height) noexcept {
    return static_cast<HICON>(LoadImageW(utils::own_module(), MAKEINTRESOURCEW(IDI_SYNC),
                                         IMAGE_ICON, width, height, LR_SHARED));
}

void set_cell(HWND list, int row, int cell, std::wstring text) {
    LVITEMW item{};
    item.iSubItem = cell;
    item.pszText = text.data();
    SendMessageW(list, LVM_SETITEMTEXTW, static_cast<WPARAM>(row), reinterpret_cast<LPARAM>(&item));
}

} // namespace

CDialogSyncManager::CDialogSyncManager() noexcept : dialog(IDD_SYNC_MANAGER) {}

bool CDialogSyncManager::on_init() {
    set_icons();
    ListView_SetExtendedListViewStyle(control(IDC_SYNC_MANAGER_LIST), LVS_EX_FULLROWSELECT);
    add_columns();
    fill();
    ui::center_window(handle());
    return true;
}

void CDialogSyncManager::set_icons() const noexcept {
    const auto set = [this](WPARAM kind, int width, int height) {
        SendMessageW(
            handle(), WM_SETICON, kind,
            reinterpret_cast<LPARAM>(load_icon(GetSystemMetrics(width), GetSystemMetrics(height))));
    };
    set(ICON_BIG, SM_CXICON, SM_CYICON);
    set(ICON_SMALL, SM_CXSMICON, SM_CYSMICON);
}

void CDialogSyncManager::add_columns() const {
    const HWND list = control(IDC_SYNC_MANAGER_LIST);
    for (std::size_t i = 0; i < std::size(columns); ++i) {
        std::wstring title = columns[i].title;
        LVCOLUMNW made{};
        made.mask = LVCF_TEXT | LVCF_WIDTH | LVCF_SUBITEM;
        made.pszText = title.data();
        made.cx = ui::scaled_to_font(handle(), {0, 0, columns[i].width, 0}).right;
        made.iSubItem = static_cast<int>(i);
        SendMessageW(list, LVM_INSERTCOLUMNW, i, reinterpret_cast<LPARAM>(&made));
    }
}

HRESULT CDialogSyncManager::fill() {
    try {
        if (!is_signed_in()) {
            return E_FAIL;
        }
        m_bindings = syncer::manager::get_bindings(user_name());
        int row = 0;
        for (const syncer::binding& each : m_bindings) {
            if (each._type == syncer::binding_type::permanent &&
                each._mode == syncer::binding_mode::user) {
                add_row(row++, each);
            }
        }
        return S_OK;
    } catch (...) {
        show_failure();
        return E_FAIL;
    }
}

void CDialogSyncManager::add_row(int index, const syncer::binding& shown) const {
    const HWND list = control(IDC_SYNC_MANAGER_LIST);
    std::wstring name = shown.filename.empty() ? L"<dir>" : shown.filename;
    LVITEMW item{};
    item.mask = LVIF_TEXT | LVIF_PARAM;
    item.iItem = index;
    item.pszText = name.data();
    item.lParam = reinterpret_cast<LPARAM>(&shown);
    const auto row =
        static_cast<int>(SendMessageW(list, LVM_INSERTITEMW, 0, reinterpret_cast<LPARAM>(&item)));
    set_cell(list, row, file_location, shown.dir_local.native());
    set_cell(list, row, store_location, shown.dir_remote.native());
}

bool CDialogSyncManager::on_command(int id, [[maybe_unused]] int code) {
    switch (id) {
    case IDC_SYNC_MANAGER_ONE_TIME:
        force_sync();
        return true;
    case IDC_SYNC_MANAGER_CANCEL:
        cancel_sync();
        return true;
    case IDCANCEL:
        end(IDCANCEL);
        return true;
    default:
        return false;
    }
}

std::optional<LRESULT> CDialogSyncManager::on_message(UINT message, WPARAM, LPARAM lparam) {
    if (message == WM_NOTIFY) {
        const auto& notice = *reinterpret_cast<const NMHDR*>(lparam);
        if (notice.idFrom == IDC_SYNC_MANAGER_LIST && notice.code == LVN_ITEMCHANGED) {
            update_buttons();
            return 0;
        }
    }
    return std::nullopt;
}

HRESULT CDialogSyncManager::force_sync() {
    const syncer::binding* const selected = binding_of(selected_row());
    if (!selected) {
        return S_OK;
    }
    try {
        if (!is_signed_in()) {
            return E_FAIL;
        }
        syncer::manager::force_sync(user_name(), *selected, true);
        return S_OK;
    } catch (...) {
        show_failure();
        return E_FAIL;
    }
}

HRESULT CDialogSyncManager::cancel_sync() {
    const int row = selected_row();
    const syncer::binding* const selected = binding_of(row);
    if (!selected) {
        return S_OK;
    }
    try {
        if (!is_signed_in()) {
            return E_FAIL;
        }
        syncer::manager::remove_binding(user_name(), *selected);
        // The row points at the binding.
        ListView_DeleteItem(control(IDC_SYNC_MANAGER_LIST), row);
        m_bindings.erase(*selected);
        update_buttons();
        return S_OK;
    } catch (...) {
        show_failure();
        return E_FAIL;
    }
}

void CDialogSyncManager::update_buttons() const {
    const bool selected = selected_row() >= 0;
    const HWND had_focus = GetFocus();
    for (const int id : {IDC_SYNC_MANAGER_CANCEL, IDC_SYNC_MANAGER_ONE_TIME}) {
        // The keyboard reaches the dialog through its focus, which no disabled button may keep.
        if (!selected && control(id) == had_focus) {
            focus(control(IDC_SYNC_MANAGER_LIST));
        }
        EnableWindow(control(id), selected);
    }
}

void CDialogSyncManager::show_failure() const noexcept {
    show_sync_failure(nullptr, L"Quilldeck syncer error", MB_OK);
}

int CDialogSyncManager::selected_row() const noexcept {
    return ListView_GetNextItem(control(IDC_SYNC_MANAGER_LIST), -1, LVNI_SELECTED);
}

const syncer::binding* CDialogSyncManager::binding_of(int row) const noexcept {
    LVITEMW item{};
    item.mask = LVIF_PARAM;
    item.iItem = row;
    if (row < 0 || !SendDlgItemMessageW(handle(), IDC_SYNC_MANAGER_LIST, LVM_GETITEMW, 0,
                                        reinterpret_cast<LPARAM>(&item))) {
        return nullptr;
    }
    return reinterpret_cast<const syncer::binding*>(item.lParam);
}

HRESULT show_sync_manager(HWND owner) {
    return com::guard([&] { CDialogSyncManager().do_modal(owner); });
}

} // namespace dialogs
