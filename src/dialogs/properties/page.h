/// How the properties dialog holds its pages. A page has a header in this folder with a function
/// that makes it, `std::unique_ptr<CPropertiesPageDlg> create_..._page(IPropertiesDialog& owner,
/// ...)`, which the dialog calls where the selection has such a page. Pages know the dialog, not
/// each other.
#pragma once

#include "shell_items/selection.h"
#include "ui/dialog.h"

#include <windows.h>

namespace dialogs {

/// What the dialog offers its pages; it outlives them. Belongs to the dialog's thread.
class IPropertiesDialog {
public:
    /// The selected items. A page that gives one of them another name writes that into its record.
    virtual shell::selection& get_selection() noexcept = 0;
    /// Of the only item, or for several the one that stands for them; null where there is none.
    virtual HICON get_large_icon() const noexcept = 0;
    /// What the tab control draws behind its pages, from its left upper corner on; null without a
    /// theme.
    virtual HBRUSH get_theme_brush() const noexcept = 0;
    /// There is something to apply, or no longer: enables Apply, or disables it. Not while the
    /// pages load.
    virtual void set_modified(bool modified) noexcept = 0;

protected:
    ~IPropertiesDialog() = default;
};

/// A page: a modeless child dialog inside the tab control. Its template has the styles DS_CONTROL
/// and WS_CHILD, the extended style WS_EX_CONTROLPARENT, and neither a caption nor WS_VISIBLE.
class CPropertiesPageDlg : public ui::dialog {
public:
    CPropertiesPageDlg(UINT resource, IPropertiesDialog& owner) noexcept
        : ui::dialog(resource), m_dialog(owner) {}

    /// Makes the window, hidden, with its left upper corner at `place` of the tab control's client
    /// area. Throws what `ui::dialog::create` throws.
    void create_in(HWND tab_control, POINT place);

    /// Fills the page in. Asks the store nothing on this thread: what has to be asked for comes
    /// later. With a failure the dialog closes.
    virtual HRESULT load() = 0;
    /// Stores what was changed, if anything was. The messages of the thread may go on meanwhile, as
    /// with `ui::run_waiting`. After a failure, of which the user has been told, there is still
    /// something to apply.
    virtual HRESULT apply() = 0;

protected:
    IPropertiesDialog& get_dialog() const noexcept { return m_dialog; }

    shell::selection& get_selection() const noexcept { return m_dialog.get_selection(); }

    void set_modified(bool modified) const noexcept { m_dialog.set_modified(modified); }

    /// Shows the tab control's background through the page and its labels. Overriders pass on to
    /// this what they do not handle.
    std::optional<LRESULT> on_message(UINT message, WPARAM wparam, LPARAM lparam) override;

private:
    IPropertiesDialog& m_dialog;
};

} // namespace dialogs
