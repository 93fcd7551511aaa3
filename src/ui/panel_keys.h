#pragma once

#include "ui/subclassed_window.h"

#include <forward_list>

namespace ui {

/// Enter and Escape inside a child dialog that has buttons of its own. The platform looks for
/// their targets in the dialog on top only: Enter in a panel's field would press that one's
/// default button, and Escape would close it. Here Enter presses the panel's button `default_id`,
/// or the button that has the focus, and Escape `IDCANCEL` of the panel.
class panel_keys {
public:
    /// Stands before all controls of `panel` that the Tab key reaches, until they end. Throws
    /// `system_error_exception`.
    void attach(HWND panel, int default_id);

private:
    class key_filter : public subclassed_window {
    public:
        key_filter(HWND control, int default_id);

    protected:
        LRESULT on_message(UINT message, WPARAM wparam, LPARAM lparam) override;

    private:
        void press(int id);

        int enter_id_;
    };

    std::forward_list<key_filter> filters_;
};

} // namespace ui
