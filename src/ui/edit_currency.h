#pragma once

#include "ui/subclassed_window.h"

#include <string>

namespace ui {

/// An edit control for an amount of money: digits, and one "." or "," with at most two digits
/// behind it. What else is typed is refused; what is pasted is not looked at.
class CEditCurrency : public subclassed_window {
public:
    /// Stands before `edit`. Throws `utils::system_error_exception`.
    using subclassed_window::attach;

    /// The number that the text begins with, of which a "." parts the decimals in every locale;
    /// 0 without one.
    double get_value() const;
    /// An amount as it is shown, with two decimals.
    static std::wstring format(double value);

protected:
    LRESULT on_message(UINT message, WPARAM wparam, LPARAM lparam) override;

private:
    bool accepts(wchar_t key) const;
};

} // namespace ui
