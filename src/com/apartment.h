/// COM on a thread.
#pragma once

#include "com/guard.h"

#include <objbase.h>

namespace com {

/// Keeps the calling thread in an apartment, a single-threaded one unless told otherwise. Throws
/// `status_exception` where the thread is in one of another kind already.
class apartment {
public:
    explicit apartment(COINIT kind = COINIT_APARTMENTTHREADED) {
        check(::CoInitializeEx(nullptr, static_cast<DWORD>(kind)));
    }

    ~apartment() { ::CoUninitialize(); }

    apartment(const apartment&) = delete;
    apartment& operator=(const apartment&) = delete;
};

} // namespace com
