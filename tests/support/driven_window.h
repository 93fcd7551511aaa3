/// Drives dialogs of another thread or process as a user would, by messages. Nothing here waits for
/// the dialog to be done with it.
#pragma once

#include "eventually.h"

#include <windows.h>

#include <string>

namespace support {

/// Runs `visit` on every child at any depth, until it answers false.
template <class Visit>
void for_each_child(HWND window, Visit visit) {
    EnumChildWindows(
        window,
        [](HWND child, LPARAM data) -> BOOL { return (*reinterpret_cast<Visit*>(data))(child); },
        reinterpret_cast<LPARAM>(&visit));
}

inline std::wstring text_of(HWND window) {
    std::wstring text(1024, L'\0');
    text.resize(static_cast<std::size_t>(
        SendMessageW(window, WM_GETTEXT, text.size(), reinterpret_cast<LPARAM>(text.data()))));
    return text;
}

inline std::wstring class_of(HWND window) {
    wchar_t name[64]{};
    GetClassNameW(window, name, 64);
    return name;
}

/// How many dialogs with this title the user sees.
inline int count_dialogs(const wchar_t* title) {
    int count = 0;
    for (HWND each = nullptr; (each = FindWindowExW(nullptr, each, L"#32770", title));) {
        count += IsWindowVisible(each);
    }
    return count;
}

/// The dialog with this title, once the user sees it; null when it does not come.
inline HWND await_dialog(const wchar_t* title) {
    HWND found = nullptr;
    eventually([&] {
        for (HWND each = nullptr; (each = FindWindowExW(nullptr, each, L"#32770", title));) {
            if (IsWindowVisible(each)) {
                found = each;
            }
        }
        return found != nullptr;
    });
    return found;
}

/// The text of a message box.
inline std::wstring message_of(HWND box) {
    std::wstring message;
    for_each_child(box, [&](HWND child) {
        if (class_of(child) == L"Static" && !text_of(child).empty()) {
            message = text_of(child);
        }
        return true;
    });
    return message;
}

/// The icon of a message box; null without one.
inline HICON icon_of(HWND box) {
    HICON icon = nullptr;
    for_each_child(box, [&](HWND child) {
        if (class_of(child) == L"Static" && !icon) {
            icon = reinterpret_cast<HICON>(SendMessageW(child, STM_GETICON, 0, 0));
        }
        return true;
    });
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
