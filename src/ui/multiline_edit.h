#pragma once

#include "ui/subclassed_window.h"

namespace ui {

/// A multi-line edit control inside a page of a dialog. By itself it takes Tab and Escape for the
/// dialog that is its parent, from which neither leads out of the page. Here they go to the dialog
/// on top, as those of all other controls; Enter begins a line.
class multiline_edit : public subclassed_window {
public:
    /// Stands before `edit`, which has ES_WANTRETURN. Throws `utils::system_error_exception`.
    using subclassed_window::attach;

protected:
    LRESULT on_message(UINT message, WPARAM wparam, LPARAM lparam) override;
};

} // namespace ui
