#pragma once

#include <windows.h>

namespace support {

/// Whether `condition` holds within 20 seconds. Serves the windows of this thread meanwhile.
template <class Condition>
bool eventually(Condition condition) {
    for (const ULONGLONG end = GetTickCount64() + 20'000; !condition();) {
        if (GetTickCount64() > end) {
            return false;
        }
        MSG message;
        while (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE)) {
            DispatchMessageW(&message);
        }
        MsgWaitForMultipleObjects(0, nullptr, FALSE, 2, QS_ALLINPUT);
    }
    return true;
}

} // namespace support
