#pragma once

#include <windows.h>

#include <shellapi.h>

#include <string>

namespace companions {

/// Our icon in the notification area. There may be no such area, or not yet: the icon then shows at
/// the next `show` that finds one. Belongs to the thread of its window.
class tray_icon {
public:
    /// What happens to the icon is posted to `window` as `message`, in the form of version 4 of the
    /// platform's protocol. `icon` is not owned.
    tray_icon(HWND window, UINT message, HICON icon);
    tray_icon(const tray_icon&) = delete;
    tray_icon& operator=(const tray_icon&) = delete;

    ~tray_icon() { hide(); }

    void show() noexcept;
    /// Has to be called before the window goes: the icon of a window that is gone stays until the
    /// user moves over it.
    void hide() noexcept;
    /// Longer texts than the platform takes, 127 characters, are cut.
    void set_tip(const std::wstring& tip) noexcept;

private:
    NOTIFYICONDATAW data_{};
    bool shown_ = false;
};

} // namespace companions
