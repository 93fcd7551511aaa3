#include "ui/placement.h"

#include <algorithm>

namespace ui {

namespace {

constexpr int usual_unit_width = 6;
constexpr int usual_unit_height = 13;

int start_of(int size, int around_start, int around_end, int work_start, int work_end) {
    const int middle = around_start + (around_end - around_start - size) / 2;
    return std::max(work_start, std::min(middle, work_end - size));
}

/// The work area of the monitor that is nearest to a window.
RECT work_area_of(HWND window) {
    MONITORINFO monitor{};
    monitor.cbSize = sizeof(monitor);
    GetMonitorInfoW(MonitorFromWindow(window, MONITOR_DEFAULTTONEAREST), &monitor);
    return monitor.rcWork;
}

RECT place_of(HWND window) {
    RECT place{};
    GetWindowRect(window, &place);
    return place;
}

/// Puts a window in the middle of `around`, within `work`.
void move_amid(HWND window, const RECT& around, const RECT& work) {
    const RECT own = place_of(window);
    SetWindowPos(window, nullptr,
                 start_of(own.right - own.left, around.left, around.right, work.left, work.right),
                 start_of(own.bottom - own.top, around.top, around.bottom, work.top, work.bottom),
                 0, 0, SWP_NOSIZE | SWP_NOZORDER | SWP_NOACTIVATE);
}

} // namespace

void center_window(HWND window) noexcept {
    const HWND owner = GetWindow(window, GW_OWNER);
    const bool visible = owner && IsWindowVisible(owner) && !IsIconic(owner);
    const RECT work = work_area_of(visible ? owner : window);
    move_amid(window, visible ? place_of(owner) : work, work);
}

void move_into_work_area(HWND window) noexcept {
    move_amid(window, place_of(window), work_area_of(window));
}

RECT scaled_to_font(HWND dialog, const RECT& layout) noexcept {
    // Four by eight dialog units are one unit of the font.
    RECT unit{0, 0, 4, 8};
    MapDialogRect(dialog, &unit);
    const auto x = [&](LONG pixels) {
        return MulDiv(pixels, unit.right, usual_unit_width);
    };
    const auto y = [&](LONG pixels) {
        return MulDiv(pixels, unit.bottom, usual_unit_height);
    };
    return {x(layout.left), y(layout.top), x(layout.right), y(layout.bottom)};
}

void set_client_height(HWND window, int height) noexcept {
    RECT own{};
    GetWindowRect(window, &own);
    RECT frame{0, 0, 0, height};
    AdjustWindowRectEx(&frame, static_cast<DWORD>(GetWindowLongPtrW(window, GWL_STYLE)), FALSE,
                       static_cast<DWORD>(GetWindowLongPtrW(window, GWL_EXSTYLE)));
    SetWindowPos(window, nullptr, 0, 0, own.right - own.left, frame.bottom - frame.top,
                 SWP_NOMOVE | SWP_NOZORDER | SWP_NOACTIVATE);
}

} // namespace ui
