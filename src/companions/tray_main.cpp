#include "companions/companion_program.h"
#include "companions/last_error.h"
#include "companions/single_instance.h"
#include "companions/tray_window.h"
#include "vfs_quilldeck/session/session_objects.h"

namespace companions {

namespace {

exit_code run_tray() {
    const single_instance instance(vfs_quilldeck::tray_mutex_name);
    if (!instance.owned()) {
        return exit_code::already_running;
    }
    const tray_window window;
    MSG message;
    for (;;) {
        switch (GetMessageW(&message, nullptr, 0, 0)) {
        case 0:
            return exit_code::done;
        case -1:
            raise_last_error("::GetMessageW(&message, NULL, 0, 0)");
        default:
            DispatchMessageW(&message);
        }
    }
}

} // namespace

} // namespace companions

int WINAPI wWinMain(HINSTANCE, HINSTANCE, wchar_t*, int) {
    return companions::companion_main(companions::tray_window_class, &companions::run_tray);
}
