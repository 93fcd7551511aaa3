#include "companions/tray_icon.h"

#include <algorithm>
#include <iterator>
#include <string_view>
#include <utility>

namespace companions {

tray_icon::tray_icon(HWND window, UINT message, HICON icon) {
    data_.cbSize = sizeof(data_);
    data_.hWnd = window;
    data_.uFlags = NIF_MESSAGE | NIF_ICON | NIF_TIP | NIF_SHOWTIP;
    data_.uCallbackMessage = message;
    data_.hIcon = icon;
    data_.uVersion = NOTIFYICON_VERSION_4;
}

void tray_icon::show() noexcept {
    // A taskbar that announces itself anew, as after a change of resolution, can still have the
    // icon and refuse a second one.
    shown_ = Shell_NotifyIconW(NIM_ADD, &data_) || Shell_NotifyIconW(NIM_MODIFY, &data_);
    if (shown_) {
        Shell_NotifyIconW(NIM_SETVERSION, &data_);
    }
}

void tray_icon::hide() noexcept {
    if (std::exchange(shown_, false)) {
        Shell_NotifyIconW(NIM_DELETE, &data_);
    }
}

void tray_icon::set_tip(const std::wstring& tip) noexcept {
    std::size_t length = std::min(tip.size(), std::size(data_.szTip) - 1);
    if (length < tip.size() && IS_HIGH_SURROGATE(tip[length - 1])) {
        --length;
    }
    const std::wstring_view text(tip.data(), length);
    if (text == data_.szTip) {
        return;
    }
    std::fill(text.copy(data_.szTip, length) + data_.szTip, std::end(data_.szTip), L'\0');
    if (shown_) {
        Shell_NotifyIconW(NIM_MODIFY, &data_);
    }
}

} // namespace companions
