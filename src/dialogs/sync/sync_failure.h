#pragma once

#include <windows.h>

#include <string>

namespace dialogs {

/// Shows the failure that is being handled under `caption`; to be called in a handler. Failures of
/// all families look alike here.
void show_sync_failure(HWND owner, const std::wstring& caption, UINT style) noexcept;

} // namespace dialogs
