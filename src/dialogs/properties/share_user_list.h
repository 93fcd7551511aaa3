#pragma once

#include "ui/gdi.h"
#include "ui/subclassed_window.h"
#include "vfs/directory.h"

#include <windows.h>

#include <commctrl.h>

#include <array>
#include <optional>
#include <string>
#include <vector>

namespace dialogs {

/// What the list sends its parent, with the row as second parameter.
inline constexpr UINT WM_CHANGE_USER = 0x500;
inline constexpr UINT WM_REMOVE_USER = 0x501;

/// The users of a folder: name, a mark in the column of the user's mode, and two links, "CH" to
/// change the mode and "REM" to remove the user. The mouse clicks the links; on the keyboard the
/// arrows choose row and link, Enter and Space click, and Delete removes.
class CShareUserList : public ui::subclassed_window {
public:
    static constexpr std::size_t column_count = 4;

    /// `list` is a report view without a header; `titles` are those of its columns. Throws
    /// `utils::system_error_exception`.
    void attach(HWND list, const std::array<std::wstring, column_count>& titles);

    void clear() noexcept;
    void add(const vfs::directory::sharewith_item& user);

    /// The user in a row; null for no row. It stays the list's.
    const vfs::directory::sharewith_item* get_user(int row) const noexcept;

    /// What the list tells its parent by WM_NOTIFY. The answer, where the parent has to give one.
    std::optional<LRESULT> on_notify(const NMHDR& notice);

protected:
    LRESULT on_message(UINT message, WPARAM wparam, LPARAM lparam) override;

private:
    enum class link { change, remove };

    struct link_at {
        int row = -1;
        link part = link::change;

        friend bool operator==(const link_at&, const link_at&) = default;
    };

    /// The three pieces of a row's last column.
    struct link_places {
        RECT change;
        RECT between;
        RECT remove;
    };

    LRESULT draw(const NMLVCUSTOMDRAW& request) const;
    void draw_row(HDC dc, int row) const;
    void draw_mark(HDC dc, const RECT& cell) const;
    void draw_links(HDC dc, int row) const;
    link_places measure_links(HDC dc, int row) const;
    RECT cell(int row, int column) const noexcept;
    /// The link at a point of the client area.
    std::optional<link_at> find_link(POINT point) const;
    bool on_mouse(UINT message, POINT point);
    bool on_key(WPARAM key);
    int focused_row() const noexcept;
    void focus_row(int row) const noexcept;
    void click(const link_at& where) const noexcept;

    ui::unique_font m_mark_font;
    /// The link that the keyboard would click.
    link m_focused_link = link::change;
    /// Where the mouse went down.
    std::optional<link_at> m_pressed;
    /// `over_link` while the mouse is over a link.
    int m_cursor_state = 0;
};

} // namespace dialogs
