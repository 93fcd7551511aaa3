#pragma once

#include "ui/dialog.h"

#include <prsht.h>

#include <memory>
#include <string>

namespace ui {

/// A page of a property sheet, made from a template among the resources of this module. Pages are
/// handed to sheets of anybody, who may never show them: from `create_page` on the object belongs
/// to the platform's page, and goes with it, after the window. The window belongs to the sheet's
/// thread.
class property_page : public dialog {
public:
    using dialog::dialog;

    /// The platform's page over `page`, with this title, for `PropertySheetW` or for the function
    /// by which a sheet takes pages; who is refused there ends it with `DestroyPropertySheetPage`.
    /// Throws `utils::system_error_exception`, and then `page` is gone.
    static HPROPSHEETPAGE create_page(std::unique_ptr<property_page> page,
                                      const std::wstring& title);

protected:
    /// OK or Apply. False keeps the sheet open at this page.
    virtual bool on_apply() { return true; }

    /// Tells the sheet that there is something to apply, or no longer.
    void set_changed(bool changed) noexcept;

    /// Answers `PSN_APPLY` by `on_apply`. Overriders pass on to this what they do not handle.
    std::optional<LRESULT> on_message(UINT message, WPARAM wparam, LPARAM lparam) override;

private:
    static INT_PTR CALLBACK page_proc(HWND window, UINT message, WPARAM wparam,
                                      LPARAM lparam) noexcept;
    static UINT CALLBACK page_callback(HWND window, UINT message, PROPSHEETPAGEW* page) noexcept;
};

} // namespace ui
