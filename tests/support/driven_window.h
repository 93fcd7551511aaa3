/// Drives dialogs of another thread or process as a user would, by messages. Nothing here waits for
/// the dialog to be done with it.
#pragma once

#include "eventually.h"

#include <windows.h>

#include <string>

namespace support {

inline std::wstring text_of(HWND window) {
    std::wstring text(1024, L'\0');
    text.resize(static_cast<std::size_t>(
        SendMessageW(window, WM_GETTEXT, text.size(), reinterpret_cast<LPARAM>(text.data()))));
    return text;
}

/// The dialog with this title that the user sees, or null.
inline HWND find_dialog(const wchar_t* title) {
    HWND each = nullptr;
    while ((each = FindWindowExW(nullptr, each, L"#32770", title)) && !IsWindowVisible(each)) {
    }
    return each;
}

/// The same once it is there; null when it does not come.
inline HWND await_dialog(const wchar_t* title) {
    HWND found = nullptr;
    eventually([&] { return (found = find_dialog(title)) != nullptr; });
    return found;
}

/// The text of a message box.
inline std::wstring message_of(HWND box) {
    return text_of(GetDlgItem(box, 0xFFFF));
}

/// The icon of a message box; null without one.
inline HICON icon_of(HWND box) {
    HICON icon = nullptr;
    for (HWND each = nullptr; !icon && (each = FindWindowExW(box, each, L"Static", nullptr));) {
        icon = reinterpret_cast<HICON>(SendMessageW(each, STM_GETICON, 0, 0));
    }
    return icon;
}

inline void press(HWND dialog, int id) {
    PostMessageW(GetDlgItem(dialog, id), BM_CLICK, 0, 0);
}

/// Presses a button of a message box and waits until that is gone.
inline bool answer_box(HWND box, int id) {
    PostMessageW(box, WM_COMMAND, static_cast<WPARAM>(id), 0);
    return eventually([&] { return !IsWindow(box); });
}

inline void type(HWND dialog, int id, const std::wstring& text) {
    SendDlgItemMessageW(dialog, id, WM_SETTEXT, 0, reinterpret_cast<LPARAM>(text.c_str()));
}

/// The window with the focus in the thread of `window`.
inline HWND focus_of(HWND window) {
    GUITHREADINFO info{};
    info.cbSize = sizeof(info);
    GetGUIThreadInfo(GetWindowThreadProcessId(window, nullptr), &info);
    return info.hwndFocus;
}

/// A key goes where the focus is.
inline void press_key(HWND window, WPARAM key) {
    PostMessageW(focus_of(window), WM_KEYDOWN, key, 0);
}

} // namespace support
