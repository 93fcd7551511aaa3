#pragma once

#include "ui/gdi.h"
#include "ui/subclassed_window.h"

#include <string>

namespace ui {

/// What a click on a link does.
enum class link_mode {
    tell_parent = 0, ///< sends the parent `WM_LINK_CLICKED`
    open_url = 1,    ///< opens the URL; an empty one does nothing
    write_mail = 2,  ///< the same with "mailto:" before the URL
};

/// Without parameters.
inline constexpr UINT WM_LINK_CLICKED = WM_USER + 1;

/// A link: underlined text in a static control, which the Tab key reaches and which Space, Enter
/// and the mouse click.
class CUrlStatic : public subclassed_window {
public:
    static constexpr COLORREF default_color = 0xFF0000;

    /// The link shows `label`. `rect` is in the parent's client pixels. Throws
    /// `utils::system_error_exception`.
    void create(HWND parent, int id, const RECT& rect, const std::wstring& label, link_mode mode,
                const std::wstring& url = {}, COLORREF color = default_color);

protected:
    LRESULT on_message(UINT message, WPARAM wparam, LPARAM lparam) override;

private:
    void copy_background();
    void paint(HDC dc);
    void click();

    link_mode m_mode = link_mode::tell_parent;
    std::wstring m_label;
    std::wstring m_url;
    COLORREF m_color = default_color;
    unique_font m_font;
    /// What the parent shows below the link, to draw the text over.
    unique_bitmap m_background;
};

} // namespace ui
