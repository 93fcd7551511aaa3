/// Message boxes. Each answers the button, as `MessageBoxW` does, and runs its own message loop.
#pragma once

#include <windows.h>

#include <initializer_list>
#include <string>

struct IUnknown;

namespace ui {

/// What a box stands on: the window of `progress`, a progress dialog, where it has one, otherwise
/// `owner`. Null is no progress dialog.
HWND window_over(HWND owner, IUnknown* progress) noexcept;

int show_message(HWND owner, const std::wstring& caption, const std::wstring& text,
                 UINT style) noexcept;

/// Shows string `text` filled with `values` under string `caption`, over `window_over(owner,
/// progress)`. Values that the text has no room for are not shown. Throws when the string table
/// has no such texts, and when there are too few values.
int show_message(HWND owner, UINT caption, UINT text, std::initializer_list<std::wstring> values,
                 UINT style, IUnknown* progress = nullptr);

/// Shows the exception that is being handled; to be called in a handler. A `vfs::exception` brings
/// its caption and text along, and has the stop icon. A standard exception is a narrow text that
/// is shown under `caption`; whatever else was raised is an "Unknown error" there.
void show_current_failure(HWND owner, const char* caption = "Internal error",
                          UINT style = MB_OK | MB_ICONSTOP) noexcept;

} // namespace ui
