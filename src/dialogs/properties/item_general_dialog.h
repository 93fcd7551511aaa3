#pragma once

#include "dialogs/properties/item_changes.h"
#include "dialogs/properties/item_values.h"
#include "dialogs/properties/page.h"
#include "dialogs/properties/page_loaders.h"
#include "ui/multiline_edit.h"

#include <cstdint>
#include <deque>
#include <exception>
#include <initializer_list>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace dialogs {

/// What the general pages of files and of folders have in common: the name, the type, the place,
/// the size, a date, the public link, the access and the description. What the records of the
/// selection tell is there at once; the rest comes from threads. What the user has begun to change
/// is never overwritten by what comes.
class CPropertiesItemGeneralDlg : public CPropertiesPageDlg {
public:
    CPropertiesItemGeneralDlg(UINT resource, IPropertiesDialog& owner);

    HRESULT apply() override;

protected:
    bool on_init() override;
    bool on_command(int id, int code) override;
    std::optional<LRESULT> on_message(UINT message, WPARAM wparam, LPARAM lparam) override;

    // Each fills in what the page shows of one property, or starts what fetches it.
    void load_name();
    void load_type();
    void load_location();
    void load_size();
    /// Of the only item; several have none.
    void load_date(double date);
    /// The same. The dialog closes when the item cannot be found.
    void load_link();
    void load_access();
    void load_description();

    virtual void show_totals(const item_totals& totals);
    void show_access(std::int32_t access);
    void show_description(const std::wstring& description);

    /// Collects what Apply has to store.
    virtual void collect_changes(item_changes& changes) const;
    virtual void clear_changes() noexcept;

    bool is_single() const noexcept { return m_folder_count + m_file_count == 1; }

    bool is_mixed() const noexcept { return m_folder_count > 0 && m_file_count > 0; }

    std::uint32_t get_folder_count() const noexcept { return m_folder_count; }

    std::uint32_t get_file_count() const noexcept { return m_file_count; }

    void start_loader(UINT caption, std::function<void(loader_link&)> load) {
        m_loaders->start(caption, std::move(load));
    }

    /// Shared with the loaders.
    const std::shared_ptr<selected_items>& get_items() const noexcept { return m_items; }

    /// Whether a change of a field's text is the user's.
    bool is_typed(int id) const noexcept { return GetFocus() == control(id) && !m_showing_text; }

    /// Sets a field's text, which does not count as the user's.
    void show_text(int id, const std::wstring& text) noexcept;
    void hide(std::initializer_list<int> ids) noexcept;
    /// Moves controls up, by pixels of the usual dialog font.
    void move_up(std::initializer_list<int> ids, int pixels) noexcept;
    /// The user has changed something of the page.
    void note_change(bool& changed) noexcept;

private:
    void text_changed(int id);
    void access_clicked(int id) noexcept;
    void loader_failed(UINT caption, std::exception_ptr failure);
    void show_failure(UINT caption, std::exception_ptr failure);

    const std::uint32_t m_folder_count;
    const std::uint32_t m_file_count;
    const std::shared_ptr<selected_items> m_items;
    std::unique_ptr<page_loaders> m_loaders;
    ui::multiline_edit m_description;
    /// Failures are shown one after another, as each box runs messages that may bring the next.
    std::deque<std::pair<UINT, std::exception_ptr>> m_failures;
    bool m_showing_failure = false;
    /// The item is not to be had: the dialog closes when the user has read why.
    bool m_closing = false;
    bool m_showing_text = false;
    /// What the user has changed, so that late values stay away and Apply has something to do.
    bool m_name_changed = false;
    bool m_access_changed = false;
    bool m_description_changed = false;
    bool m_stop_access = false;
    bool m_stop_description = false;
};

} // namespace dialogs
