#pragma once

#include <windows.h>

namespace support {

/// Takes the handle of the kernel object that is made next, and on `protect` lets no `CloseHandle`
/// close it until the end: what a wrong handle in another part of a host comes to.
class unclosable_handle {
public:
    unclosable_handle() : handle_(CreateEventW(nullptr, FALSE, FALSE, nullptr)) {
        // The platform gives the lowest free number.
        CloseHandle(handle_);
    }

    unclosable_handle(const unclosable_handle&) = delete;
    unclosable_handle& operator=(const unclosable_handle&) = delete;

    ~unclosable_handle() {
        SetHandleInformation(handle_, HANDLE_FLAG_PROTECT_FROM_CLOSE, 0);
        CloseHandle(handle_);
    }

    bool protect() const noexcept {
        return SetHandleInformation(handle_, HANDLE_FLAG_PROTECT_FROM_CLOSE,
                                    HANDLE_FLAG_PROTECT_FROM_CLOSE);
    }

private:
    HANDLE handle_;
};

} // namespace support
