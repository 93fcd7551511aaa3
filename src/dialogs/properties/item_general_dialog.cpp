#include "dialogs/properties/item_general_dialog.h"

#include "resources/properties_ids.h"
#include "resources/string_ids.h"
#include "shell_items/display_text.h"
#include "ui/background_work.h"
#include "ui/message.h"
#include "ui/placement.h"
#include "ui/strings.h"
#include "vfs/vfs.h"

#include <boost/algorithm/string/replace.hpp>

#include <algorithm>
#include <utility>

namespace dialogs {

namespace {

/// Posted by the threads that work for the page.
constexpr UINT WM_LOADED = WM_APP;

constexpr ULONGLONG milliseconds_between_figures = 100;

constexpr int bytes_unit = 0;
constexpr int largest_unit = 4;

constexpr struct {
    int id;
    std::int32_t access;
} access_radios[] = {
    {IDC_ACCESS_PUBLIC, vfs::access_public},
    {IDC_ACCESS_HIDDEN, vfs::access_hidden},
    {IDC_ACCESS_PRIVATE, vfs::access_private},
};

std::uint32_t count_of(const shell::selection& items, std::int32_t type) {
    return static_cast<std::uint32_t>(
        std::ranges::count(items.records, type, &shell::PIDLDATA::type));
}

} // namespace

CPropertiesItemGeneralDlg::CPropertiesItemGeneralDlg(UINT resource, IPropertiesDialog& owner)
    : CPropertiesPageDlg(resource, owner),
      m_folder_count(count_of(owner.get_selection(), vfs::type_directory)),
      m_file_count(count_of(owner.get_selection(), vfs::type_file)),
      m_items(std::make_shared<selected_items>(owner.get_selection())) {}

bool CPropertiesItemGeneralDlg::on_init() {
    m_loaders = std::make_unique<page_loaders>(handle(), WM_LOADED,
                                               [this](UINT caption, std::exception_ptr failure) {
                                                   loader_failed(caption, std::move(failure));
                                               });
    m_description.attach(control(IDC_ITEM_DESCRIPTION));
    SendDlgItemMessageW(handle(), IDC_ITEM_DESCRIPTION, EM_SETLIMITTEXT, 0, 0);
    SendDlgItemMessageW(handle(), IDC_ITEM_ICON, STM_SETICON,
                        reinterpret_cast<WPARAM>(get_dialog().get_large_icon()), 0);
    for (const auto& radio : access_radios) {
        // Where the Tab key passes by a choice that nobody has made, none is made.
        SendDlgItemMessageW(handle(), radio.id, BM_SETDONTCLICK, TRUE, 0);
    }
    return false;
}

void CPropertiesItemGeneralDlg::load_name() {
    if (is_single()) {
        SendDlgItemMessageW(handle(), IDC_ITEM_NAME, EM_SETLIMITTEXT,
                            std::size(shell::PIDLDATA().name) - 1, 0);
        show_text(IDC_ITEM_NAME, get_selection().records.front().get_name());
        return;
    }
    const HWND name = control(IDC_ITEM_NAME);
    SendMessageW(name, EM_SETREADONLY, TRUE, 0);
    SetWindowLongPtrW(name, GWL_STYLE,
                      GetWindowLongPtrW(name, GWL_STYLE) & ~LONG_PTR{WS_BORDER | WS_TABSTOP});
    SetWindowLongPtrW(name, GWL_EXSTYLE,
                      GetWindowLongPtrW(name, GWL_EXSTYLE) & ~LONG_PTR{WS_EX_CLIENTEDGE});
    SetWindowPos(name, nullptr, 0, 0, 0, 0,
                 SWP_FRAMECHANGED | SWP_NOMOVE | SWP_NOSIZE | SWP_NOZORDER | SWP_NOACTIVATE);
    show_text(IDC_ITEM_NAME, ui::load_string(IDS_SELECTED_COUNTS, {std::to_wstring(m_folder_count),
                                                                   std::to_wstring(m_file_count)}));
}

void CPropertiesItemGeneralDlg::load_type() {
    const std::vector<shell::PIDLDATA>& records = get_selection().records;
    const std::wstring first = records.front().get_type_text();
    const bool same = std::ranges::all_of(
        records, [&](const shell::PIDLDATA& record) { return first == record.get_type_text(); });
    show_text(IDC_ITEM_TYPE, is_single() ? first
                             : same      ? ui::load_string(IDS_ALL_OF_TYPE, {first})
                                         : ui::load_string(IDS_MULTIPLE_TYPES));
}

void CPropertiesItemGeneralDlg::load_location() {
    const std::wstring store = ui::load_string(IDS_STORE) + L"\\";
    if (get_selection().records.front().is_live()) {
        show_text(IDC_ITEM_LOCATION, store + get_selection().list.path_string());
        return;
    }
    // Where an item of the Trash was before, the store alone knows.
    show_text(IDC_ITEM_LOCATION, store);
    start_loader(IDS_LINK_FAILED, [this, store, items = get_items()](loader_link& link) {
        const item_list found = items->find(link.stop_all);
        if (link.stop_all) {
            return;
        }
        std::wstring path = found.front()->get_path();
        path.resize(std::min(path.rfind(L'/'), path.size()));
        std::ranges::replace(path, L'/', L'\\');
        link.to_page.post([this, text = store + path] { show_text(IDC_ITEM_LOCATION, text); });
    });
}

void CPropertiesItemGeneralDlg::load_size() {
    item_totals totals;
    for (const shell::PIDLDATA& record : get_selection().records) {
        totals.size += record.is_file() ? record.size : 0;
    }
    show_totals(totals);
    if (m_folder_count == 0) {
        return;
    }
    start_loader(IDS_SIZE_FAILED, [this, totals, items = get_items()](loader_link& link) {
        item_totals latest = totals;
        const auto show = [&] {
            link.to_page.post([this, latest] { show_totals(latest); });
        };
        // Nobody reads faster, and the listings need not wait for the window.
        ULONGLONG next = 0;
        const auto note = [&](const item_totals& found) {
            latest = found;
            if (const ULONGLONG now = GetTickCount64(); now >= next) {
                next = now + milliseconds_between_figures;
                show();
            }
        };
        try {
            add_contents(items->find(link.stop_all), totals, note, link.stop_all);
        } catch (...) {
            show();
            throw;
        }
        show();
    });
}

void CPropertiesItemGeneralDlg::load_date(double date) {
    if (!is_single()) {
        hide({IDC_DATE_LABEL, IDC_ITEM_DATE});
        return;
    }
    show_text(IDC_ITEM_DATE, date == shell::no_date ? ui::load_string(IDS_UNKNOWN_DATE)
                                                    : shell::format_date(date));
}

void CPropertiesItemGeneralDlg::load_link() {
    if (!is_single()) {
        hide({IDC_LINK_LABEL, IDC_ITEM_LINK});
        return;
    }
    start_loader(IDS_LINK_FAILED, [this, items = get_items()](loader_link& link) {
        try {
            const item_list found = items->find(link.stop_all);
            if (!link.stop_all) {
                link.to_page.post(
                    [this, text = found.front()->get_link()] { show_text(IDC_ITEM_LINK, text); });
            }
        } catch (const vfs::exception&) {
            // The item itself is not to be had, and with it nothing else.
            link.to_page.post([this, failure = std::current_exception()] {
                m_failures.clear();
                m_closing = true;
                show_failure(IDS_LINK_FAILED, failure);
            });
        }
    });
}

void CPropertiesItemGeneralDlg::load_access() {
    if (is_mixed()) {
        hide({IDC_ACCESS_LABEL, IDC_ACCESS_PUBLIC, IDC_ACCESS_HIDDEN, IDC_ACCESS_PRIVATE});
        return;
    }
    start_loader(IDS_PERMISSIONS_FAILED, [this, items = get_items()](loader_link& link) {
        const auto access = common_access(items->find(link.stop_all), link.stop_all);
        if (access) {
            link.to_page.post([this, value = *access] {
                if (!m_stop_access) {
                    show_access(value);
                }
            });
        }
    });
}

void CPropertiesItemGeneralDlg::load_description() {
    if (is_mixed()) {
        hide({IDC_DESCRIPTION_LABEL, IDC_ITEM_DESCRIPTION});
        return;
    }
    start_loader(IDS_DESCRIPTION_FAILED, [this, items = get_items()](loader_link& link) {
        const auto description = common_description(items->find(link.stop_all), link.stop_all);
        if (description) {
            link.to_page.post([this, text = *description] {
                if (!m_stop_description) {
                    show_description(text);
                }
            });
        }
    });
}

void CPropertiesItemGeneralDlg::show_totals(const item_totals& totals) {
    show_text(IDC_ITEM_SIZE,
              shell::format_size(totals.size, bytes_unit, largest_unit, true) + L" (" +
                  shell::format_size(totals.size, bytes_unit, bytes_unit, false) + L")");
}

void CPropertiesItemGeneralDlg::show_access(std::int32_t access) {
    for (const auto& radio : access_radios) {
        set_checked(radio.id, radio.access == access);
    }
}

void CPropertiesItemGeneralDlg::show_description(const std::wstring& description) {
    // The control begins a line at both characters together only.
    show_text(IDC_ITEM_DESCRIPTION,
              boost::replace_all_copy(boost::replace_all_copy(description, L"\r\n", L"\n"), L"\n",
                                      L"\r\n"));
}

bool CPropertiesItemGeneralDlg::on_command(int id, int code) {
    switch (id) {
    case IDC_ITEM_NAME:
    case IDC_ITEM_DESCRIPTION:
        if (code == EN_CHANGE && is_typed(id)) {
            text_changed(id);
        }
        return true;
    case IDC_ACCESS_PUBLIC:
    case IDC_ACCESS_HIDDEN:
    case IDC_ACCESS_PRIVATE:
        if (code == BN_CLICKED) {
            access_clicked(id);
        }
        return true;
    default:
        return false;
    }
}

void CPropertiesItemGeneralDlg::text_changed(int id) {
    if (id == IDC_ITEM_NAME) {
        note_change(m_name_changed);
    } else {
        m_stop_description = true;
        note_change(m_description_changed);
    }
}

void CPropertiesItemGeneralDlg::access_clicked(int id) noexcept {
    // A radio button tells of a click also when it merely gets the focus.
    if (is_checked(id)) {
        m_stop_access = true;
        note_change(m_access_changed);
    }
}

void CPropertiesItemGeneralDlg::note_change(bool& changed) noexcept {
    changed = true;
    set_modified(true);
}

std::optional<LRESULT> CPropertiesItemGeneralDlg::on_message(UINT message, WPARAM wparam,
                                                             LPARAM lparam) {
    switch (message) {
    case WM_LOADED:
        m_loaders->run_tasks();
        return 0;
    case WM_DESTROY:
        m_loaders.reset();
        return std::nullopt;
    default:
        return CPropertiesPageDlg::on_message(message, wparam, lparam);
    }
}

HRESULT CPropertiesItemGeneralDlg::apply() {
    const auto changes = std::make_shared<item_changes>();
    changes->items = get_selection();
    collect_changes(*changes);
    if (!changes->name && !changes->access && !changes->description && !changes->price) {
        return S_OK;
    }
    if (!ui::run_waiting(handle(), [changes] { store(*changes); })) {
        changes->stop = true;
        return E_ABORT;
    }
    if (changes->name) {
        get_selection().records.front() = changes->items.records.front();
    }
    for (const item_changes::failure& failure : changes->failures) {
        if (failure.reason) {
            show_failure(failure.caption, failure.reason);
        }
    }
    if (!changes->failures.empty()) {
        return E_FAIL;
    }
    clear_changes();
    set_modified(false);
    return S_OK;
}

void CPropertiesItemGeneralDlg::collect_changes(item_changes& changes) const {
    if (m_name_changed && is_single()) {
        changes.name = get_text(IDC_ITEM_NAME);
    }
    if (m_access_changed) {
        const auto chosen = std::ranges::find_if(
            access_radios, [this](const auto& radio) { return is_checked(radio.id); });
        if (chosen != std::end(access_radios)) {
            changes.access = chosen->access;
        }
    }
    if (m_description_changed) {
        changes.description = get_text(IDC_ITEM_DESCRIPTION);
    }
}

void CPropertiesItemGeneralDlg::clear_changes() noexcept {
    m_name_changed = false;
    m_access_changed = false;
    m_description_changed = false;
}

void CPropertiesItemGeneralDlg::show_text(int id, const std::wstring& text) noexcept {
    const bool before = std::exchange(m_showing_text, true);
    set_text(id, text);
    m_showing_text = before;
}

void CPropertiesItemGeneralDlg::hide(std::initializer_list<int> ids) noexcept {
    for (const int id : ids) {
        ShowWindow(control(id), SW_HIDE);
    }
}

void CPropertiesItemGeneralDlg::move_up(std::initializer_list<int> ids, int pixels) noexcept {
    const LONG distance = ui::scaled_to_font(handle(), {0, 0, 0, pixels}).bottom;
    for (const int id : ids) {
        RECT place{};
        GetWindowRect(control(id), &place);
        MapWindowPoints(nullptr, handle(), reinterpret_cast<POINT*>(&place), 2);
        SetWindowPos(control(id), nullptr, place.left, place.top - distance, 0, 0,
                     SWP_NOSIZE | SWP_NOZORDER | SWP_NOACTIVATE);
    }
}

void CPropertiesItemGeneralDlg::loader_failed(UINT caption, std::exception_ptr failure) {
    // One box is enough to say that the item is not there.
    if (!m_closing) {
        show_failure(caption, std::move(failure));
    }
}

void CPropertiesItemGeneralDlg::show_failure(UINT caption, std::exception_ptr failure) {
    m_failures.emplace_back(caption, std::move(failure));
    if (std::exchange(m_showing_failure, true)) {
        return;
    }
    while (!m_failures.empty()) {
        const auto [shown_caption, reason] = std::move(m_failures.front());
        m_failures.pop_front();
        try {
            std::rethrow_exception(reason);
        } catch (const vfs::exception& raised) {
            ui::show_message(handle(), ui::load_string(shown_caption), raised.get_description(),
                             MB_OK | MB_ICONERROR);
        } catch (...) {
            ui::show_current_failure(handle());
        }
    }
    m_showing_failure = false;
    if (m_closing) {
        PostMessageW(GetAncestor(handle(), GA_ROOT), WM_CLOSE, 0, 0);
    }
}

} // namespace dialogs
