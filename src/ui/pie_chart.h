#pragma once

#include "ui/subclassed_window.h"

namespace ui {

/// The window class "PieChart": a static control by another name, for the templates of this module.
/// The class is there for as long as any object of this type is; one that makes windows of it keeps
/// one until they are gone. Any thread.
class pie_chart_class {
public:
    /// Throws `utils::system_error_exception`.
    pie_chart_class();
    pie_chart_class(const pie_chart_class&) = delete;
    pie_chart_class& operator=(const pie_chart_class&) = delete;
    ~pie_chart_class();
};

/// A round cake seen from above and in front, of which a part is used: it begins at the left end
/// and goes round clockwise, over the far side. Too small a control stays empty.
class CPieChart : public subclassed_window {
public:
    using subclassed_window::attach;

    /// The used part in thousandths; what is above 1000 counts as 1000. Draws anew.
    void set_value(unsigned value) noexcept;

protected:
    LRESULT on_message(UINT message, WPARAM wparam, LPARAM lparam) override;

private:
    void paint(HDC dc) const;

    unsigned m_value = 0;
};

} // namespace ui
