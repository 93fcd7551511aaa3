/// GDI+ in this process.
#pragma once

#include "utils/slim_lock.h"

#include <windows.h>

namespace shell {

/// A use of GDI+ that begins when it is first needed. One static object serves the module: its
/// destructor runs when the module goes.
class CGdiPlus {
public:
    CGdiPlus() = default;
    CGdiPlus(const CGdiPlus&) = delete;
    CGdiPlus& operator=(const CGdiPlus&) = delete;
    ~CGdiPlus();

    /// Starts GDI+ unless this was done before. May be called on any thread. Throws
    /// `com::status_exception`.
    void start();

private:
    utils::slim_lock m_lock;
    /// 0: not started.
    ULONG_PTR m_token = 0;
};

} // namespace shell
