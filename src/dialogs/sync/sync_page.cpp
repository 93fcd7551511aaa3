#include "dialogs/sync/sync_page.h"

#include "dialogs/login/sign_in.h"
#include "dialogs/sync/sync_failure.h"
#include "resources/string_ids.h"
#include "resources/sync_ids.h"
#include "shell_items/seams.h"
#include "shell_items/sync_page_mode.h"
#include "syncer/binding_manager.h"
#include "syncer/binding_paths.h"
#include "syncer/exceptions.h"
#include "syncer/manager.h"
#include "ui/message.h"
#include "ui/strings.h"
#include "utils/module.h"
#include "utils/thread.h"
#include "vfs_quilldeck/session/session.h"
#include "vfs_quilldeck/session/session_objects.h"

#include <algorithm>
#include <exception>
#include <iterator>
#include <source_location>
#include <utility>

namespace dialogs {

namespace {

constexpr UINT WM_REQUEST_DONE = WM_APP + 1;

std::wstring user_name() {
    return vfs_quilldeck::get_user_info(utils::own_module()).user_name;
}

/// As fields show paths.
std::wstring shown(std::wstring path) {
    std::ranges::replace(path, L'/', L'\\');
    return path;
}

} // namespace

void CSyncPage::show_entries(std::vector<sync_entry> entries, std::wstring default_other_end) {
    m_entries = std::move(entries);
    m_default_other_end = std::move(default_other_end);
    read_bindings();
    SetDlgItemTextW(
        page(), IDC_SYNC_ITEM,
        (is_single() ? shown(m_entries.front().path) : ui::load_string(IDS_MULTIPLE_ITEMS))
            .c_str());
    if (has_preselection()) {
        m_touched.permanent_touched = m_touched.choice_touched = true;
        CheckDlgButton(page(), m_controls.permanent, BST_CHECKED);
        CheckRadioButton(page(), m_controls.full_sync, m_controls.backup,
                         m_mode == shell::sync_mode_full ? m_controls.full_sync
                                                         : m_controls.backup);
        tell_changed(true);
    }
    show_untouched();
    m_loading = false;
}

std::wstring CSyncPage::with_leaf(std::wstring folder) const {
    return is_single()
               ? syncer::join_path(std::move(folder), m_entries.front().name, m_ends.separator)
               : folder;
}

void CSyncPage::set_default_other_end(std::wstring path) {
    m_default_other_end = std::move(path);
    show_untouched();
}

bool CSyncPage::has_preselection() const noexcept {
    return m_mode == shell::sync_mode_full || m_mode == shell::sync_mode_backup ||
           m_mode == shell::sync_mode_backup_too;
}

void CSyncPage::ask_store(std::function<std::function<void()>()> work) {
    m_tasks = std::make_shared<ui::window_tasks>(page(), WM_REQUEST_DONE);
    utils::start_pool_work([tasks = m_tasks, work = std::move(work)] {
        std::function<void()> done;
        try {
            done = work();
        } catch (...) {
            done = [failure = std::current_exception()] {
                std::rethrow_exception(failure);
            };
        }
        tasks->post(std::move(done));
    });
}

bool CSyncPage::handle_message(UINT message) {
    if (message == WM_DESTROY && m_tasks) {
        m_tasks->close();
    }
    if (message != WM_REQUEST_DONE || !m_tasks) {
        return false;
    }
    try {
        m_tasks->run();
    } catch (...) {
        show_failure();
        request_failed();
    }
    return true;
}

bool CSyncPage::handle_command(int id, int code) {
    if (id == m_controls.other_end && code == EN_CHANGE) {
        touch(&sync_wish::path_touched);
        return true;
    }
    if (code != BN_CLICKED) {
        return false;
    }
    if (id == m_controls.permanent) {
        touch(&sync_wish::permanent_touched);
    } else if (id == m_controls.full_sync || id == m_controls.backup) {
        touch(&sync_wish::choice_touched);
    } else if (id == m_controls.browse) {
        choose_folder();
    } else if (id == m_controls.manage) {
        manage();
    } else {
        return false;
    }
    return true;
}

void CSyncPage::touch(bool sync_wish::* what) {
    if (m_loading) {
        return;
    }
    m_touched.*what = true;
    update_visibility();
    tell_changed(true);
}

void CSyncPage::choose_folder() {
    try {
        if (const auto folder = browse()) {
            // The field tells of it like of any change.
            SetDlgItemTextW(page(), m_controls.other_end, shown(*folder).c_str());
        }
    } catch (...) {
        show_failure();
    }
}

void CSyncPage::manage() {
    const auto show = shell::get_seams().dialogs.show_sync_manager;
    if (!show) {
        return;
    }
    show(GetActiveWindow());
    // Its user may have ended bindings of these items.
    try {
        read_bindings();
        show_untouched();
    } catch (...) {
        show_failure();
    }
}

void CSyncPage::show_failure() const noexcept {
    std::wstring caption;
    try {
        caption = ui::load_string(IDS_BINDINGS_FAILED);
    } catch (...) {
        // It is shown without one.
        caption.clear();
    }
    show_sync_failure(page(), caption, MB_OK | MB_ICONERROR);
}

void CSyncPage::refuse_path() const {
    ui::show_message(page(), IDS_WRONG_PATH, IDS_PATH_REFUSED, {ui::load_string(IDS_STORE)},
                     MB_OK | MB_ICONERROR);
}

std::wstring CSyncPage::get_other_end() const {
    const HWND field = control(m_controls.other_end);
    std::wstring text(static_cast<std::size_t>(GetWindowTextLengthW(field)) + 1, L'\0');
    const int length = GetWindowTextW(field, text.data(), static_cast<int>(text.size()));
    text.resize(static_cast<std::size_t>(length));
    return text;
}

sync_wish CSyncPage::read_wish() const {
    sync_wish wish = m_touched;
    wish.permanent = is_checked(m_controls.permanent);
    wish.backup = is_checked(m_controls.backup);
    if (!is_single() && wish.permanent_touched) {
        // What is shown for several items is meant for all of them.
        wish.choice_touched = wish.path_touched = true;
    }
    return wish;
}

void CSyncPage::show_untouched() {
    const bool was_loading = std::exchange(m_loading, true);
    const bool has_one = is_single() && m_entries.front().bindings.size() == 1;
    const syncer::binding* const one = has_one ? &m_entries.front().bindings.front() : nullptr;
    if (!m_touched.permanent_touched) {
        CheckDlgButton(page(), m_controls.permanent, one ? BST_CHECKED : BST_UNCHECKED);
    }
    if (!m_touched.choice_touched) {
        CheckRadioButton(page(), m_controls.full_sync, m_controls.backup,
                         one && is_backup(one->rule) ? m_controls.backup : m_controls.full_sync);
    }
    if (!m_touched.path_touched) {
        SetDlgItemTextW(page(), m_controls.other_end,
                        shown(one ? m_ends.other(*one) : m_default_other_end).c_str());
    }
    update_visibility();
    m_loading = was_loading;
}

void CSyncPage::update_visibility() const {
    const bool permanent = is_checked(m_controls.permanent);
    const bool backup = is_checked(m_controls.backup);
    EnableWindow(control(m_controls.full_sync), permanent);
    EnableWindow(control(m_controls.backup), permanent);
    RECT place{};
    GetWindowRect(control(m_controls.backup_notice), &place);
    MapWindowPoints(nullptr, page(), reinterpret_cast<POINT*>(&place), 2);
    SetWindowPos(control(m_controls.full_sync_notice), nullptr, place.left, place.top,
                 place.right - place.left, place.bottom - place.top, SWP_NOZORDER | SWP_NOACTIVATE);
    const auto show = [this](int id, bool visible) {
        ShowWindow(control(id), visible ? SW_SHOWNA : SW_HIDE);
    };
    show(m_controls.backup_notice, permanent && backup);
    show(m_controls.hidden_notice, permanent && backup);
    show(m_controls.full_sync_notice, permanent && !backup);
}

void CSyncPage::read_bindings() {
    assign_bindings(syncer::manager::get_bindings(user_name()));
}

void CSyncPage::assign_bindings(const syncer::binding_set& all) {
    for (sync_entry& entry : m_entries) {
        entry.bindings = permanent_of(all, entry);
    }
}

bool CSyncPage::belongs(const syncer::binding& named, const sync_entry& entry) const {
    const std::wstring path = m_ends.own(named);
    return syncer::same_path(path, entry.path) ||
           (!entry.former_path.empty() && syncer::same_path(path, entry.former_path));
}

std::vector<syncer::binding> CSyncPage::permanent_of(const syncer::binding_set& all,
                                                     const sync_entry& entry) const {
    std::vector<syncer::binding> found;
    std::ranges::copy_if(all, std::back_inserter(found), [&](const syncer::binding& each) {
        return each._type == syncer::binding_type::permanent &&
               each._mode != syncer::binding_mode::edited_copy && belongs(each, entry);
    });
    return found;
}

bool CSyncPage::apply() {
    if (!m_touched.is_touched()) {
        return true;
    }
    try {
        utils::named_mutex mutex(vfs_quilldeck::login_mutex_name);
        if (ensure_logged_in(mutex, GetAncestor(page(), GA_ROOT)) && finish(store(read_wish()))) {
            return true;
        }
    } catch (...) {
        show_failure();
    }
    tell_changed(true);
    return false;
}

CSyncPage::outcome CSyncPage::store(const sync_wish& wish) {
    update_entries(m_entries);
    syncer::binding_manager manager(user_name(), true);
    // Everything is tried on a copy first: the destructor saves whatever was done until then.
    syncer::binding_set all = manager.get_bindings();
    std::vector<syncer::binding> removed;
    std::vector<syncer::binding> added;
    bool changed_elsewhere = false;
    for (sync_entry& entry : m_entries) {
        const std::vector<syncer::binding> now = permanent_of(all, entry);
        const binding_plan plan = plan_bindings(entry.bindings, now, wish);
        if (plan == binding_plan::conflict) {
            entry.bindings = now;
            m_changed_elsewhere = shown(entry.path);
            changed_elsewhere = true;
        }
        if (plan == binding_plan::replace) {
            auto made = replacement(entry, now, wish);
            if (!made) {
                return outcome::path_refused;
            }
            added.push_back(std::move(*made));
        }
        if (plan == binding_plan::replace || plan == binding_plan::remove) {
            std::ranges::copy_if(all, std::back_inserter(removed),
                                 [&](const syncer::binding& each) { return belongs(each, entry); });
        }
    }
    if (changed_elsewhere) {
        return outcome::changed_elsewhere;
    }
    std::erase_if(removed, [&](const syncer::binding& each) { return all.erase(each) == 0; });
    for (const syncer::binding& each : added) {
        if (!all.insert(each).second) {
            throw syncer::duplicated_binding_exception(
                std::source_location::current().function_name(),
                syncer::text_of(each) + " is duplicated");
        }
    }
    for (const syncer::binding& each : removed) {
        manager.remove_binding(each);
    }
    for (const syncer::binding& each : added) {
        manager.add_binding(each);
    }
    manager.commit();
    assign_bindings(manager.get_bindings());
    return outcome::stored;
}

std::optional<syncer::binding> CSyncPage::replacement(const sync_entry& entry,
                                                      const std::vector<syncer::binding>& now,
                                                      const sync_wish& wish) const {
    syncer::binding made;
    const bool has_one = now.size() == 1;
    if (has_one && !wish.path_touched) {
        made = now.front();
        if (!entry.former_path.empty()) {
            follow(made, entry);
        }
    } else {
        const auto folder = chosen_folder(get_other_end());
        if (!folder) {
            return std::nullopt;
        }
        made = bind(entry, *folder);
        if (has_one) {
            made.rule = now.front().rule;
            made.force_sync_once = now.front().force_sync_once;
        }
    }
    if (!has_one || wish.choice_touched) {
        made.rule = wish.backup ? syncer::backup_rule : syncer::full_sync_rule;
    }
    made._mode = syncer::binding_mode::user;
    made._type = syncer::binding_type::permanent;
    made.can_recourse_subdirs = 0;
    return made;
}

bool CSyncPage::finish(outcome result) {
    switch (result) {
    case outcome::stored:
        m_touched = {};
        for (sync_entry& entry : m_entries) {
            entry.former_path.clear();
        }
        show_untouched();
        return true;
    case outcome::path_refused:
        refuse_path();
        return false;
    case outcome::changed_elsewhere:
        show_untouched();
        ui::show_message(page(), IDS_BINDINGS_FAILED, IDS_BINDINGS_CHANGED, {m_changed_elsewhere},
                         MB_OK | MB_ICONERROR);
        return false;
    }
    return false;
}

} // namespace dialogs
