#pragma once

#include <windows.h>

namespace ui {

/// Shows that this thread is busy and does not answer.
class wait_cursor {
public:
    wait_cursor() noexcept : old_(::SetCursor(::LoadCursorW(nullptr, IDC_WAIT))) {}

    wait_cursor(const wait_cursor&) = delete;
    wait_cursor& operator=(const wait_cursor&) = delete;

    ~wait_cursor() { ::SetCursor(old_); }

private:
    HCURSOR old_;
};

} // namespace ui
