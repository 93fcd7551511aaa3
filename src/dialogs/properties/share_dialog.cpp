#include "dialogs/properties/share_dialog.h"

#include "dialogs/properties/share_page.h"
#include "resources/share_ids.h"
#include "resources/string_ids.h"
#include "ui/background_work.h"
#include "ui/message.h"
#include "ui/strings.h"
#include "utils/thread.h"
#include "vfs/exceptions.h"

#include <utility>

namespace dialogs {

namespace {

constexpr UINT WM_TASKS = WM_APP;

constexpr UINT failure_style = MB_OK | MB_ICONSTOP;

/// The way to the one selected folder, for other threads.
struct folder_path {
    std::shared_ptr<vfs::directory> parent;
    std::wstring id;

    explicit folder_path(const shell::selection& items)
        : parent(items.folder), id(items.records.front().get_id()) {}

    /// Null when the item is no folder.
    std::shared_ptr<vfs::directory> find() const {
        return std::dynamic_pointer_cast<vfs::directory>(parent->find_item_by_id(id, false));
    }
};

std::wstring trimmed(const std::wstring& text) {
    const auto blank = [](wchar_t unit) {
        return iswspace(unit) != 0;
    };
    auto first = text.begin();
    auto last = text.end();
    while (first != last && blank(*first)) {
        ++first;
    }
    while (first != last && blank(*(last - 1))) {
        --last;
    }
    return {first, last};
}

} // namespace

std::unique_ptr<CPropertiesPageDlg> create_share_page(IPropertiesDialog& owner) {
    return std::make_unique<CPropertiesFileShareDlg>(owner);
}

CPropertiesFileShareDlg::CPropertiesFileShareDlg(IPropertiesDialog& owner) noexcept
    : CPropertiesPageDlg(IDD_SHARING, owner) {}

bool CPropertiesFileShareDlg::on_init() {
    m_tasks = std::make_shared<ui::window_tasks>(handle(), WM_TASKS);
    // The list is asked for Enter before these.
    m_keys.attach(handle(), IDOK);
    m_users.attach(control(IDC_SHARING_USERS),
                   {get_text(IDC_SHARING_USERS_HEAD), get_text(IDC_SHARING_VIEW_HEAD),
                    get_text(IDC_SHARING_FULL_HEAD), get_text(IDC_SHARING_LINKS_HEAD)});
    return true;
}

HRESULT CPropertiesFileShareDlg::load() {
    SendDlgItemMessageW(handle(), IDC_SHARING_ICON, STM_SETICON,
                        reinterpret_cast<WPARAM>(get_dialog().get_large_icon()), 0);
    set_text(IDC_SHARING_NAME, get_selection().records.front().get_name());
    enter_add_mode();
    m_users.clear();
    m_loading = true;
    const int filling = ++m_filling;
    utils::start_pool_work([this, tasks = m_tasks, path = folder_path(get_selection()), filling] {
        const auto tell = [&](const auto& then) {
            tasks->post([this, filling, then] {
                m_loading = false;
                if (filling == m_filling) {
                    then();
                }
            });
        };
        try {
            const auto folder = path.find();
            tell([this, found = folder ? folder->get_sharewith_items() : users{}] {
                show_users(found);
            });
        } catch (const vfs::exception& failure) {
            tell([this, text = failure.get_description()] {
                show_failure(IDS_USERS_FAILED, text, failure_style | MB_SETFOREGROUND);
            });
        } catch (...) {
            tell([cause = std::current_exception()] { std::rethrow_exception(cause); });
        }
    });
    return S_OK;
}

bool CPropertiesFileShareDlg::on_command(int id, int code) {
    if (code != BN_CLICKED) {
        return false;
    }
    switch (id) {
    case IDOK:
        press_enter();
        return true;
    case IDCANCEL:
        PostMessageW(GetAncestor(handle(), GA_ROOT), WM_COMMAND, IDCANCEL, 0);
        return true;
    case IDC_SHARING_SHARE:
        share();
        return true;
    case IDC_SHARING_SAVE:
        save_changes();
        return true;
    default:
        return false;
    }
}

/// Enter in a field: what the field is for, and in an empty one that of the dialog.
void CPropertiesFileShareDlg::press_enter() {
    if (m_selected_sharing != 0) {
        save_changes();
    } else if (!trimmed(get_text(IDC_SHARING_USER)).empty()) {
        share();
    } else {
        PostMessageW(GetAncestor(handle(), GA_ROOT), WM_COMMAND, IDOK, 0);
    }
}

std::optional<LRESULT> CPropertiesFileShareDlg::on_message(UINT message, WPARAM wparam,
                                                           LPARAM lparam) {
    switch (message) {
    case WM_TASKS:
        m_tasks->run();
        return 0;
    case WM_CHANGE_USER:
    case WM_REMOVE_USER:
        if (const auto* const user = m_users.get_user(static_cast<int>(lparam))) {
            message == WM_CHANGE_USER ? change_user(user->id) : remove_user(user->id);
        }
        return 0;
    case WM_NOTIFY: {
        const auto& notice = *reinterpret_cast<const NMHDR*>(lparam);
        return notice.idFrom == IDC_SHARING_USERS ? m_users.on_notify(notice) : std::nullopt;
    }
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
    return CPropertiesPageDlg::on_message(message, wparam, lparam);
}

template <class Ask>
auto CPropertiesFileShareDlg::ask_folder(const Ask& ask)
    -> std::optional<std::invoke_result_t<Ask, vfs::directory&>> {
    // The thread may outlive this page.
    const auto answer =
        std::make_shared<std::optional<std::invoke_result_t<Ask, vfs::directory&>>>();
    const bool ended =
        ui::run_waiting(handle(), [answer, ask, path = folder_path(get_selection())] {
            if (const auto folder = path.find()) {
                *answer = ask(*folder);
            }
        });
    return ended ? std::move(*answer) : std::nullopt;
}

void CPropertiesFileShareDlg::guarded(UINT caption, const std::function<void()>& steps) {
    try {
        steps();
    } catch (const vfs::exception& failure) {
        show_failure(caption, failure.get_description(), failure_style);
    }
}

void CPropertiesFileShareDlg::show_failure(UINT caption, const std::wstring& text,
                                           UINT style) const {
    // A dialog is shown when it has nothing else to do, which may be after the first answer.
    ShowWindow(GetAncestor(handle(), GA_ROOT), SW_SHOW);
    ui::show_message(handle(), ui::load_string(caption), text, style);
}

void CPropertiesFileShareDlg::share() {
    guarded(IDS_SHARING_FAILED, [this] {
        const std::wstring name = trimmed(get_text(IDC_SHARING_USER));
        const auto found = ask_folder([name](vfs::directory& folder) {
            bool is_address = false;
            const std::int32_t user = folder.can_share_with(name, is_address);
            return std::pair(user, is_address);
        });
        if (!found) {
            return;
        }
        const auto [user, is_address] = *found;
        if (user == 0) {
            tell_unknown(name, is_address);
            return;
        }
        const auto shared = ask_folder([user](vfs::directory& folder) {
            folder.sharing(user);
            return true;
        });
        if (!shared || !fill()) {
            return;
        }
        const auto sharing = ask_folder([user](vfs::directory& folder) {
            return folder.find_sharewith_item_by_userid(user)->id;
        });
        if (sharing) {
            change_user(*sharing);
        }
    });
}

void CPropertiesFileShareDlg::tell_unknown(const std::wstring& name, bool is_address) {
    set_text(IDC_SHARING_MESSAGE,
             ui::load_string(is_address ? IDS_USER_INVITED : IDS_NO_SUCH_USER, {name}));
    show_change_controls(false);
    show_controls({IDC_SHARING_MESSAGE}, true);
    if (is_address) {
        ask_folder([name](vfs::directory& folder) {
            folder.email_for_sharing(name);
            return true;
        });
    }
}

void CPropertiesFileShareDlg::change_user(std::int32_t sharing) {
    guarded(IDS_MODE_FAILED, [&] {
        const auto user = ask_folder([sharing](vfs::directory& folder) {
            return *folder.find_sharewith_item_by_id(sharing);
        });
        if (user) {
            enter_change_mode(*user);
        }
    });
}

void CPropertiesFileShareDlg::save_changes() {
    if (m_selected_sharing == 0) {
        return;
    }
    guarded(IDS_MODE_FAILED, [this] {
        const std::int32_t mode = is_checked(IDC_SHARING_VIEW)   ? 0
                                  : is_checked(IDC_SHARING_FULL) ? 1
                                                                 : m_selected_mode;
        const auto saved = ask_folder([sharing = m_selected_sharing, mode](vfs::directory& folder) {
            folder.find_sharewith_item_by_id(sharing);
            folder.set_share_mode(sharing, mode);
            return true;
        });
        if (saved && fill()) {
            enter_add_mode();
        }
    });
}

void CPropertiesFileShareDlg::remove_user(std::int32_t sharing) {
    if (ui::show_message(handle(), {}, ui::load_string(IDS_REMOVE_USER), MB_YESNO) != IDYES) {
        return;
    }
    guarded(IDS_REMOVING_FAILED, [&] {
        const auto removed = ask_folder([sharing](vfs::directory& folder) {
            folder.delete_sharing_with_user(folder.find_sharewith_item_by_id(sharing)->id);
            return true;
        });
        if (removed && fill()) {
            enter_add_mode();
        }
    });
}

bool CPropertiesFileShareDlg::fill() {
    ++m_filling;
    m_users.clear();
    try {
        const auto found =
            ask_folder([](vfs::directory& folder) { return folder.get_sharewith_items(); });
        if (!found) {
            return false;
        }
        show_users(*found);
    } catch (const vfs::exception& failure) {
        show_failure(IDS_USERS_FAILED, failure.get_description(), failure_style | MB_SETFOREGROUND);
    }
    return true;
}

void CPropertiesFileShareDlg::show_users(const users& found) {
    m_users.clear();
    for (const auto& user : found) {
        m_users.add(*user);
    }
    set_text(IDC_SHARING_STATE, ui::load_string(found.empty() ? IDS_NOT_SHARED : IDS_SHARED));
}

void CPropertiesFileShareDlg::enter_add_mode() {
    const bool focused = IsChild(handle(), GetFocus());
    m_selected_sharing = 0;
    show_add_controls(true);
    // The focus leaves what is about to be hidden.
    if (focused && GetFocus() != m_users.handle()) {
        focus(control(IDC_SHARING_USER));
    }
    show_change_controls(false);
}

void CPropertiesFileShareDlg::enter_change_mode(const vfs::directory::sharewith_item& user) {
    m_selected_sharing = user.id;
    m_selected_mode = user.share_mode;
    set_checked(IDC_SHARING_VIEW, user.share_mode == 0);
    set_checked(IDC_SHARING_FULL, user.share_mode == 1);
    set_text(IDC_SHARING_CHANGED_USER, user.name);
    show_change_controls(true);
    if (IsChild(handle(), GetFocus())) {
        SetFocus(control(user.share_mode == 1 ? IDC_SHARING_FULL : IDC_SHARING_VIEW));
    }
    show_add_controls(false);
}

void CPropertiesFileShareDlg::show_add_controls(bool show) {
    set_text(IDC_SHARING_HEADING, ui::load_string(show ? IDS_ADD_USER : IDS_SHARE_WITH));
    show_controls({IDC_SHARING_USER, IDC_SHARING_SHARE, IDC_SHARING_HINT}, show);
    show_controls({IDC_SHARING_CHANGED_USER}, !show);
}

void CPropertiesFileShareDlg::show_change_controls(bool show) {
    show_controls({IDC_SHARING_GROUP, IDC_SHARING_PERMISSIONS, IDC_SHARING_VIEW, IDC_SHARING_FULL,
                   IDC_SHARING_SAVE},
                  show);
    if (show) {
        show_controls({IDC_SHARING_MESSAGE}, false);
    }
}

void CPropertiesFileShareDlg::show_controls(std::initializer_list<int> ids,
                                            bool show) const noexcept {
    for (const int id : ids) {
        ShowWindow(control(id), show ? SW_SHOW : SW_HIDE);
    }
}

} // namespace dialogs
