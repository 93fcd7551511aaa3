#include "dialogs/login/sign_in.h"

#include "dialogs/login/login_dialog.h"
#include "utils/module.h"
#include "vfs_quilldeck/session/session.h"

#include <atomic>

namespace dialogs {

namespace {

/// The thread of this process that shows the dialog, or 0. The mutex would let it in once more.
std::atomic<DWORD> asking_thread;

bool ask(HWND owner) {
    asking_thread = GetCurrentThreadId();

    struct reset_at_end {
        ~reset_at_end() { asking_thread = 0; }
    } reset;

    CLoginDlg dialog;
    return dialog.do_modal(owner) == IDOK;
}

} // namespace

bool ensure_logged_in(utils::named_mutex& mutex, HWND owner) {
    // Its message loop runs whatever else the thread has to do, a refresh of the drive among it.
    if (asking_thread == GetCurrentThreadId()) {
        return false;
    }
    const utils::mutex_hold hold(mutex);
    return vfs_quilldeck::is_logged_in(utils::own_module()) || ask(owner);
}

} // namespace dialogs
