#include "drive_test.h"

#include "vfs_quilldeck/session/session.h"

#include <windows.h>

vfs::client_ptr drive_test::sign_in() {
    const HMODULE module = ::GetModuleHandleW(nullptr);
    if (!vfs_quilldeck::is_logged_in(module)) {
        vfs_quilldeck::login(module, L"demo", L"demo");
    }
    return vfs_quilldeck::get_client(module);
}
