/// Where the platform enters this DLL.
#include "module/private_heap.h"
#include "module/thread_state.h"
#include "vfs_quilldeck/wire/curl_descriptor_cache.h"

#include <windows.h>

// The compiler's own entry: makes and destroys static objects, and calls DllMain.
extern "C" BOOL WINAPI DllMainCRTStartup(HINSTANCE instance, DWORD reason, void* reserved);

/// Called by the compiler's own entry.
extern "C" BOOL WINAPI DllMain(HINSTANCE, DWORD reason, void*) {
    if (reason == DLL_THREAD_DETACH) {
        vfs_quilldeck::release_thread();
    }
    return TRUE;
}

/// Stands around the compiler's own entry, since that allocates before it calls DllMain, and uses
/// what it allocated until after.
extern "C" BOOL WINAPI quilldeck_entry(HINSTANCE instance, DWORD reason, void* reserved) {
    // With the process everything ends by itself. The other threads were ended wherever they were,
    // and what they had locked stays locked: no static object may be destroyed any more.
    if (reason == DLL_PROCESS_DETACH && reserved != nullptr) {
        return TRUE;
    }
    if (reason == DLL_PROCESS_ATTACH &&
        !(module::private_heap::create() && module::thread_state::create())) {
        return FALSE;
    }
    const BOOL result = DllMainCRTStartup(instance, reason, reserved);
    if (reason == DLL_PROCESS_DETACH) {
        module::thread_state::destroy();
        module::private_heap::destroy();
    }
    return result;
}
