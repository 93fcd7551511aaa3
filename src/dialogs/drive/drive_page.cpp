#include "dialogs/drive/drive_page.h"

#include "dialogs/login/sign_in.h"
#include "resources/drive_ids.h"
#include "resources/resource_ids.h"
#include "resources/string_ids.h"
#include "shell_items/display_text.h"
#include "shell_items/seams.h"
#include "ui/message.h"
#include "ui/strings.h"
#include "utils/module.h"
#include "utils/named_mutex.h"
#include "utils/thread.h"
#include "vfs_quilldeck/session/session.h"
#include "vfs_quilldeck/session/session_objects.h"

#include <limits>
#include <optional>

namespace dialogs {

namespace {

/// Posted by the page to itself, so that the sheet is there before anything is asked.
constexpr UINT WM_LOAD = WM_USER + 1;
constexpr UINT WM_TASKS = WM_APP;

constexpr std::int64_t whole = 1000;

/// Nothing when nobody is signed in. Waits while somebody is about to sign in.
std::optional<drive_account> read_account() {
    const HMODULE module = utils::own_module();
    {
        utils::named_mutex mutex(vfs_quilldeck::login_mutex_name);
        const utils::mutex_hold hold(mutex);
        if (!vfs_quilldeck::is_logged_in(module)) {
            return std::nullopt;
        }
    }
    const vfs::client_ptr client = vfs_quilldeck::get_client(module);
    return drive_account{client->get_user_info(), client->get_storage_info()};
}

HICON load_drive_icon(int width, int height) noexcept {
    return static_cast<HICON>(LoadImageW(utils::own_module(), MAKEINTRESOURCEW(IDI_DRIVE),
                                         IMAGE_ICON, width, height, LR_SHARED));
}

} // namespace

unsigned used_thousandths(const vfs::storage_info& storage) noexcept {
    const std::int64_t used = storage.space_used;
    const std::int64_t capacity = storage.capacity;
    if (capacity <= 0 || used <= 0) {
        return 0;
    }
    if (used >= capacity) {
        return whole;
    }
    // The store's figures may be anything.
    const bool fits = used <= std::numeric_limits<std::int64_t>::max() / whole;
    return static_cast<unsigned>(fits ? used * whole / capacity : used / (capacity / whole));
}

CDrivePageDlg::CDrivePageDlg(IUnknown& extension)
    : property_page(IDD_DRIVE), m_extension(&extension) {}

bool CDrivePageDlg::on_init() {
    m_tasks = std::make_shared<ui::window_tasks>(handle(), WM_TASKS);
    set_text(IDC_DRIVE_NAME, ui::load_string(IDS_STORE));
    set_sheet_icons();
    m_pie.attach(control(IDC_DRIVE_PIE));
    if (!shell::get_seams().dialogs.show_sync_manager) {
        ShowWindow(control(IDC_DRIVE_SYNC_MANAGER), SW_HIDE);
    }
    PostMessageW(handle(), WM_LOAD, 0, 0);
    return true;
}

void CDrivePageDlg::set_sheet_icons() const noexcept {
    const HWND sheet = GetParent(handle());
    const HICON large = load_drive_icon(GetSystemMetrics(SM_CXICON), GetSystemMetrics(SM_CYICON));
    const HICON small =
        load_drive_icon(GetSystemMetrics(SM_CXSMICON), GetSystemMetrics(SM_CYSMICON));
    SendMessageW(sheet, WM_SETICON, ICON_BIG, reinterpret_cast<LPARAM>(large));
    SendMessageW(sheet, WM_SETICON, ICON_SMALL, reinterpret_cast<LPARAM>(small));
}

bool CDrivePageDlg::on_command(int id, int code) {
    if (id != IDC_DRIVE_SYNC_MANAGER || code != BN_CLICKED) {
        return false;
    }
    if (const auto show = shell::get_seams().dialogs.show_sync_manager) {
        // It tells its failures itself.
        show(GetActiveWindow());
    }
    return true;
}

std::optional<LRESULT> CDrivePageDlg::on_message(UINT message, WPARAM wparam, LPARAM lparam) {
    switch (message) {
    // A number that the platform gives a meaning too, but only where the dialog procedure has none.
    case WM_LOAD:
        load();
        return 0;
    case WM_TASKS:
        m_tasks->run();
        return 0;
    case WM_SETCURSOR:
        if (m_loading) {
            SetCursor(LoadCursorW(nullptr, IDC_APPSTARTING));
            return TRUE;
        }
        break;
    case WM_DESTROY:
        if (m_tasks) {
            m_tasks->close();
        }
        break;
    default:
        break;
    }
    return property_page::on_message(message, wparam, lparam);
}

void CDrivePageDlg::load() {
    if (m_loading) {
        return;
    }
    m_loading = true;
    try {
        utils::start_pool_work([this, tasks = m_tasks] {
            try {
                tasks->post([this, account = read_account()] {
                    m_loading = false;
                    account ? show(*account) : sign_in();
                });
            } catch (...) {
                tasks->post([this, cause = std::current_exception()] { fail(cause); });
            }
        });
    } catch (...) {
        fail(std::current_exception());
    }
}

void CDrivePageDlg::sign_in() {
    try {
        utils::named_mutex mutex(vfs_quilldeck::login_mutex_name);
        if (ensure_logged_in(mutex, GetParent(handle()))) {
            load();
        } else {
            close_sheet();
        }
    } catch (...) {
        fail(std::current_exception());
    }
}

void CDrivePageDlg::show(const drive_account& account) {
    set_text(IDC_DRIVE_USER_NAME, account.user.user_name);
    set_text(IDC_DRIVE_USER_LEVEL, account.user.user_level);
    show_size(IDC_DRIVE_USED, IDC_DRIVE_USED_SHORT, account.storage.space_used);
    if (account.storage.capacity == 0) {
        const std::wstring unlimited = ui::load_string(IDS_UNLIMITED);
        set_text(IDC_DRIVE_FREE, unlimited);
        set_text(IDC_DRIVE_CAPACITY, unlimited);
    } else {
        show_size(IDC_DRIVE_FREE, IDC_DRIVE_FREE_SHORT, account.storage.space_free);
        show_size(IDC_DRIVE_CAPACITY, IDC_DRIVE_CAPACITY_SHORT, account.storage.capacity);
    }
    m_pie.set_value(used_thousandths(account.storage));
}

void CDrivePageDlg::show_size(int full_id, int short_id, std::int64_t size) {
    set_text(full_id, shell::format_size(size, 0, 0, false));
    set_text(short_id, shell::format_size(size, 0, 4, true));
}

void CDrivePageDlg::fail(const std::exception_ptr& cause) noexcept {
    m_loading = false;
    try {
        std::rethrow_exception(cause);
    } catch (...) {
        ui::show_current_failure(handle());
    }
    close_sheet();
}

void CDrivePageDlg::close_sheet() const noexcept {
    PostMessageW(GetParent(handle()), WM_CLOSE, 0, 0);
}

} // namespace dialogs
