#include "ui/background_work.h"

#include "ui/subclassed_window.h"
#include "ui/wait_cursor.h"
#include "utils/exceptions.h"
#include "utils/thread.h"
#include "utils/unique_handle.h"

#include <exception>
#include <memory>
#include <source_location>
#include <utility>
#include <vector>

namespace ui {

namespace {

/// What the two threads share. It goes with whoever is the last to need it.
struct work {
    std::function<void()> body;
    std::exception_ptr failure;
    utils::unique_handle ended{CreateEventW(nullptr, TRUE, FALSE, nullptr)};

    void run() noexcept {
        try {
            body();
        } catch (...) {
            failure = std::current_exception();
        }
        // What it owns goes on this thread, whether or not somebody waits.
        body = nullptr;
        SetEvent(ended.get());
    }
};

/// The dialog on top while it waits: its controls are disabled, and what closes it is noted and
/// done afterwards.
class waiting_dialog : public subclassed_window {
public:
    explicit waiting_dialog(HWND top) : focus_(GetFocus()) {
        attach(top);
        const HWND cancel = GetDlgItem(top, IDCANCEL);
        for (HWND child = GetWindow(top, GW_CHILD); child; child = GetWindow(child, GW_HWNDNEXT)) {
            if (child != cancel && IsWindowEnabled(child)) {
                disabled_.push_back(child);
            }
        }
        // The keyboard reaches a dialog through its focus, which no disabled control may keep.
        if (IsChild(top, focus_)) {
            SetFocus(cancel);
        }
        enable_controls(FALSE);
    }

    ~waiting_dialog() override {
        enable_controls(TRUE);
        if (handle() && IsChild(handle(), focus_)) {
            SetFocus(focus_);
        }
        if (closed_ && handle()) {
            PostMessageW(handle(), WM_COMMAND, IDCANCEL, 0);
        }
    }

    /// The user has closed it, or it is gone.
    bool is_closed() const noexcept { return closed_ || !handle(); }

    void close() noexcept { closed_ = true; }

protected:
    LRESULT on_message(UINT message, WPARAM wparam, LPARAM lparam) override {
        switch (message) {
        case WM_COMMAND:
            closed_ = closed_ || LOWORD(wparam) == IDCANCEL;
            return 0;
        case WM_CLOSE:
            closed_ = true;
            return 0;
        case WM_SETCURSOR:
            // Disabled controls leave the mouse to the dialog; Cancel does not.
            if (reinterpret_cast<HWND>(wparam) == handle() && LOWORD(lparam) == HTCLIENT) {
                SetCursor(LoadCursorW(nullptr, IDC_WAIT));
                return TRUE;
            }
            break;
        default:
            break;
        }
        return subclassed_window::on_message(message, wparam, lparam);
    }

private:
    void enable_controls(BOOL enabled) noexcept {
        for (const HWND control : disabled_) {
            EnableWindow(control, enabled);
        }
    }

    HWND focus_;
    std::vector<HWND> disabled_;
    bool closed_ = false;
};

/// Handles what is in the queue of this thread.
void handle_messages(waiting_dialog& dialog) {
    MSG message;
    while (!dialog.is_closed() && PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE)) {
        if (message.message == WM_QUIT) {
            // For the loop that this one stands in.
            PostQuitMessage(static_cast<int>(message.wParam));
            dialog.close();
        } else if (!IsDialogMessageW(dialog.handle(), &message)) {
            TranslateMessage(&message);
            DispatchMessageW(&message);
        }
    }
}

} // namespace

bool run_waiting(HWND window, std::function<void()> body) {
    const auto shared = std::make_shared<work>();
    if (!shared->ended) {
        throw utils::system_error_exception(std::source_location::current().function_name(),
                                            "::CreateEventW(nullptr, TRUE, FALSE, nullptr)",
                                            GetLastError());
    }
    shared->body = std::move(body);
    const wait_cursor wait;
    waiting_dialog dialog(GetAncestor(window, GA_ROOT));
    utils::start_pool_work([shared] { shared->run(); });
    HANDLE ended = shared->ended.get();
    while (MsgWaitForMultipleObjectsEx(1, &ended, INFINITE, QS_ALLINPUT, MWMO_INPUTAVAILABLE) !=
           WAIT_OBJECT_0) {
        handle_messages(dialog);
        if (dialog.is_closed()) {
            return false;
        }
    }
    if (shared->failure) {
        std::rethrow_exception(shared->failure);
    }
    return true;
}

} // namespace ui
