/// Finding the windows of other processes.
#pragma once

#include <windows.h>

#include <string>

namespace desktop {

/// A visible top-level window of this class whose title has `title` in it; null when there is none.
/// An empty class or title fits all.
HWND find_window(const std::wstring& window_class, const std::wstring& title);

/// A window of this class anywhere below `parent`, visible or not; null when there is none.
HWND find_below(HWND parent, const std::wstring& window_class);

/// A window's text, also that of another process's control.
std::wstring text_of(HWND window);

} // namespace desktop
