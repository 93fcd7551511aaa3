#include "windows_of_others.h"

#include <array>

namespace desktop {

namespace {

struct search {
    std::wstring window_class;
    std::wstring title;
    bool visible_only;
    HWND found = nullptr;
};

std::wstring class_of(HWND window) {
    std::array<wchar_t, 64> name{};
    ::GetClassNameW(window, name.data(), static_cast<int>(name.size()));
    return name.data();
}

BOOL CALLBACK look_at(HWND window, LPARAM parameter) {
    auto& wanted = *reinterpret_cast<search*>(parameter);
    if (wanted.visible_only && !::IsWindowVisible(window)) {
        return TRUE;
    }
    if (!wanted.window_class.empty() && class_of(window) != wanted.window_class) {
        return TRUE;
    }
    if (!wanted.title.empty() && text_of(window).find(wanted.title) == std::wstring::npos) {
        return TRUE;
    }
    wanted.found = window;
    return FALSE;
}

} // namespace

HWND find_window(const std::wstring& window_class, const std::wstring& title) {
    search wanted{window_class, title, true};
    ::EnumWindows(&look_at, reinterpret_cast<LPARAM>(&wanted));
    return wanted.found;
}

HWND find_below(HWND parent, const std::wstring& window_class) {
    search wanted{window_class, {}, false};
    ::EnumChildWindows(parent, &look_at, reinterpret_cast<LPARAM>(&wanted));
    return wanted.found;
}

std::wstring text_of(HWND window) {
    constexpr UINT patience = 5000;
    std::array<wchar_t, 1024> text{};
    DWORD_PTR length = 0;
    // A window that hangs must not hang whoever looks at it.
    ::SendMessageTimeoutW(window, WM_GETTEXT, text.size(), reinterpret_cast<LPARAM>(text.data()),
                          SMTO_ABORTIFHUNG, patience, &length);
    return {text.data(), length};
}

} // namespace desktop
