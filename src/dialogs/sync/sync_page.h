#pragma once

#include "dialogs/sync/binding_plan.h"
#include "syncer/binding.h"
#include "ui/window_tasks.h"

#include <windows.h>

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace dialogs {

/// The numbers of the controls that the two templates have in common.
struct sync_page_controls {
    int other_end;
    int browse;
    int permanent;
    int full_sync;
    int backup;
    int manage;
    int backup_notice;
    int full_sync_notice;
    int hidden_notice;
};

/// Which end of a binding is which on a page.
struct sync_page_ends {
    using path_of = std::wstring (*)(const syncer::binding& named);
    path_of own;   ///< where the page's items are
    path_of other; ///< where their counterparts are
    /// Between the names of the other end's paths, as the page shows them.
    wchar_t separator;
};

/// One selected item.
struct sync_entry {
    bool is_directory = false;
    /// At the page's end of bindings: a local path, or one in the store.
    std::wstring path;
    /// The path that the bindings know, where that is another one.
    std::wstring former_path;
    /// Its own name, as its counterpart is called.
    std::wstring name;
    /// The permanent ones, as the page shows them.
    std::vector<syncer::binding> bindings;
};

/// What the two pages that bind items have in common: a tick, a choice and a path become bindings
/// when the page is applied. It is no window itself: pages derive from it beside what makes them
/// one, and pass on their messages. Belongs to the page's thread.
class CSyncPage {
public:
    CSyncPage(const CSyncPage&) = delete;
    CSyncPage& operator=(const CSyncPage&) = delete;

protected:
    /// `mode` is a `shell::sync_page_mode`.
    CSyncPage(const sync_page_controls& controls, const sync_page_ends& ends, int mode) noexcept
        : m_controls(controls), m_ends(ends), m_mode(mode) {}

    virtual ~CSyncPage() = default;

    virtual HWND page() const noexcept = 0;
    /// There is something to apply, or no longer.
    virtual void tell_changed(bool changed) noexcept = 0;
    /// Lets the user choose the folder of the other end; nothing when there is none.
    virtual std::optional<std::wstring> browse() = 0;
    /// The folder that the text of the other end's field names, of one item the one that its
    /// counterpart lies in. Nothing where no binding can lead.
    virtual std::optional<std::wstring> chosen_folder(const std::wstring& text) const = 0;
    /// Of the two ends only. Throws what a name throws that the other end cannot have.
    virtual syncer::binding bind(const sync_entry& entry, const std::wstring& folder) const = 0;

    /// Before bindings are looked for: items may have got other names.
    virtual void update_entries(std::vector<sync_entry>&) const {}

    /// Leads a binding of the former path of an item to its present one.
    virtual void follow(syncer::binding&, const sync_entry&) const {}

    /// A request failed, and the user has been told.
    virtual void request_failed() noexcept = 0;

    /// Reads the bindings of the entries and shows everything. `default_other_end` is shown where
    /// there is no single binding.
    void show_entries(std::vector<sync_entry> entries, std::wstring default_other_end);
    void set_default_other_end(std::wstring path);

    bool is_single() const noexcept { return m_entries.size() == 1; }

    /// Where the counterpart of the only item would lie; `folder` itself for several.
    std::wstring with_leaf(std::wstring folder) const;

    const std::vector<sync_entry>& get_entries() const noexcept { return m_entries; }

    /// Runs `work` on a thread of its own. What it answers is run on the page's thread, if the page
    /// is there still; what fails is shown.
    void ask_store(std::function<std::function<void()>()> work);
    /// Passes on a message; true when it is done.
    bool handle_message(UINT message);
    /// The same of a command.
    bool handle_command(int id, int code);
    /// Stores what was changed; false after a failure, of which the user has been told.
    bool apply();
    /// Tells of the failure that is being handled, as with everything about bindings.
    void show_failure() const noexcept;
    void refuse_path() const;

private:
    enum class outcome { stored, path_refused, changed_elsewhere };

    bool has_preselection() const noexcept;
    sync_wish read_wish() const;
    void touch(bool sync_wish::* what);
    void show_untouched();
    void update_visibility() const;
    void choose_folder();
    void manage();
    void read_bindings();
    void assign_bindings(const syncer::binding_set& all);
    bool belongs(const syncer::binding& named, const sync_entry& entry) const;
    std::vector<syncer::binding> permanent_of(const syncer::binding_set& all,
                                              const sync_entry& entry) const;
    std::optional<syncer::binding> replacement(const sync_entry& entry,
                                               const std::vector<syncer::binding>& now,
                                               const sync_wish& wish) const;
    outcome store(const sync_wish& wish);
    bool finish(outcome result);

    HWND control(int id) const noexcept { return GetDlgItem(page(), id); }

    bool is_checked(int id) const noexcept { return IsDlgButtonChecked(page(), id) == BST_CHECKED; }

    std::wstring get_other_end() const;

    const sync_page_controls& m_controls;
    const sync_page_ends& m_ends;
    const int m_mode;
    std::vector<sync_entry> m_entries;
    std::wstring m_default_other_end;
    /// Only what was touched counts; the rest is in the controls.
    sync_wish m_touched;
    /// While the page fills itself in.
    bool m_loading = true;
    /// The item whose bindings were found to be others.
    std::wstring m_changed_elsewhere;
    std::shared_ptr<ui::window_tasks> m_tasks;
};

} // namespace dialogs
