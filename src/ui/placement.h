/// Where windows stand.
#pragma once

#include <windows.h>

namespace ui {

/// Puts a window in the middle of its owner, or, where it has none that can be seen, of the work
/// area of the nearest monitor. It stays within the work area and keeps its size and order.
void center_window(HWND window) noexcept;

/// Moves a window into the work area of the nearest monitor, as far as it fits there.
void move_into_work_area(HWND window) noexcept;

/// A rectangle that was laid out in pixels for a dialog font with the usual units of 6 by 13, in
/// the pixels of this dialog's font.
RECT scaled_to_font(HWND dialog, const RECT& layout) noexcept;

/// Gives the client area of a window the height, in pixels. Width, place and order stay.
void set_client_height(HWND window, int height) noexcept;

} // namespace ui
