#pragma once

#include "dialogs/properties/page.h"
#include "ui/gdi.h"
#include "utils/unique_handle.h"

#include <memory>
#include <vector>

namespace dialogs {

struct icon_traits {
    using pointer = HICON;

    static pointer none() noexcept { return nullptr; }

    static void close(pointer value) noexcept { ::DestroyIcon(value); }
};

using unique_icon = utils::unique_resource<icon_traits>;

/// The properties of items of one folder of the drive, one or many: a tab control with a page for
/// each thing that can be told and changed of them. `do_modal` answers `IDOK` or `IDCANCEL`. The
/// store is asked on threads of the pages, so that the dialog is there at once.
class CPropertiesFileDlg : public ui::dialog, private IPropertiesDialog {
public:
    /// There must be a record. `start_page` is 0 for the general page, 1 for that of sharing, and
    /// for that of synchronization 2, 3 or 4, which is its mode too; a page that the items do not
    /// have leaves the general one.
    CPropertiesFileDlg(shell::selection items, int start_page);

    ~CPropertiesFileDlg() override { destroy(); }

protected:
    bool on_init() override;
    bool on_command(int id, int code) override;
    std::optional<LRESULT> on_message(UINT message, WPARAM wparam, LPARAM lparam) override;

private:
    // IPropertiesDialog
    shell::selection& get_selection() noexcept override { return m_items; }

    HICON get_large_icon() const noexcept override { return m_large_icon.get(); }

    HBRUSH get_theme_brush() const noexcept override { return m_theme_brush.get(); }

    void set_modified(bool modified) noexcept override;

    void load_icons();
    void load_theme_brush() noexcept;
    void create_pages();
    enum class page_kind { general, sharing, synchronization };

    void add_page(page_kind kind, std::unique_ptr<CPropertiesPageDlg> page, UINT title);
    void select_start_page();
    void load_pages();
    void show_current_page();
    HRESULT apply();

    shell::selection m_items;
    const int m_start_page;
    unique_icon m_small_icon;
    unique_icon m_large_icon;
    ui::unique_brush m_theme_brush;

    struct tab {
        page_kind kind;
        std::unique_ptr<CPropertiesPageDlg> page;
    };

    /// In their order.
    std::vector<tab> m_pages;
    bool m_loading = false;
};

} // namespace dialogs
