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

} // namespace

void center_window(HWND window) noexcept {
    const HWND owner = GetWindow(window, GW_OWNER);
    const bool visible = owner && IsWindowVisible(owner) && !IsIconic(owner);
    MONITORINFO monitor{};
    monitor.cbSize = sizeof(monitor);
    GetMonitorInfoW(MonitorFromWindow(visible ? owner : window, MONITOR_DEFAULTTONEAREST),
                    &monitor);
    const RECT& work = monitor.rcWork;
    RECT around = work;
    if (visible) {
        GetWindowRect(owner, &around);
    }
    RECT own{};
    GetWindowRect(window, &own);
    SetWindowPos(window, nullptr,
                 start_of(own.right - own.left, around.left, around.right, work.left, work.right),
                 start_of(own.bottom - own.top, around.top, around.bottom, work.top, work.bottom),
                 0, 0, SWP_NOSIZE | SWP_NOZORDER | SWP_NOACTIVATE);
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
