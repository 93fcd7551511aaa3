#include "companions/companion_program.h"
#include "companions/companion_window.h"
#include "companions/last_error.h"
#include "companions/session_state.h"
#include "companions/single_instance.h"

namespace companions {

namespace {

constexpr auto instance_mutex_name = L"Local\\Quilldeck_Mutex_Session";

/// Dispatches what is in the queue; false when the loop is to end.
bool dispatch_messages() {
    MSG message;
    while (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE)) {
        if (message.message == WM_QUIT) {
            return false;
        }
        DispatchMessageW(&message);
    }
    return true;
}

/// Signs off whenever that is asked, until the window goes. The block's mutex is waited for
/// together with the messages: whoever holds it must not keep the logon session from ending.
void serve(session_state& state) {
    bool signing_off = false;
    for (;;) {
        const HANDLE awaited = signing_off ? state.identity_mutex() : state.log_off_event();
        const DWORD result =
            MsgWaitForMultipleObjectsEx(1, &awaited, INFINITE, QS_ALLINPUT, MWMO_INPUTAVAILABLE);
        switch (result) {
        case WAIT_OBJECT_0 + 1:
            if (!dispatch_messages()) {
                return;
            }
            break;
        case WAIT_OBJECT_0:
        case WAIT_ABANDONED_0: // an owner that died left nothing that emptying would not mend
            if (signing_off) {
                state.forget_identity();
                ReleaseMutex(state.identity_mutex());
            }
            signing_off = !signing_off;
            break;
        default:
            raise_last_error("::MsgWaitForMultipleObjectsEx(1, &awaited, INFINITE, ...)");
        }
    }
}

exit_code run_session() {
    single_instance instance(instance_mutex_name);
    if (!instance.owned()) {
        return exit_code::already_running;
    }
    const companion_window window(session_window_class);
    session_state state;
    serve(state);
    // Before the log-off event goes: who misses the event starts the next session at once, and that
    // one must not find this one in its way.
    instance.release();
    return exit_code::done;
}

} // namespace

} // namespace companions

int WINAPI wWinMain(HINSTANCE, HINSTANCE, wchar_t*, int) {
    return companions::companion_main(companions::session_window_class, &companions::run_session);
}
