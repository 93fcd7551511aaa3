#pragma once

#include <windows.h>

namespace companions {

/// The hidden window of a companion, through which it hears of the end of the logon session and is
/// asked to exit: `WM_CLOSE` and a `WM_ENDSESSION` that says so destroy it, and its destruction
/// ends the message loop of its thread. It is a top-level window because message-only windows get
/// no broadcasts. An object belongs to the thread that made it.
class companion_window {
public:
    /// Throws `system_error_exception`.
    explicit companion_window(const wchar_t* class_name);
    companion_window(const companion_window&) = delete;
    companion_window& operator=(const companion_window&) = delete;
    virtual ~companion_window();

    HWND handle() const noexcept { return window_; }

protected:
    /// Answers a message. What it throws is shown to the user. Overriders pass on what they do not
    /// handle.
    virtual LRESULT on_message(UINT message, WPARAM wparam, LPARAM lparam);

private:
    static LRESULT CALLBACK window_proc(HWND window, UINT message, WPARAM wparam,
                                        LPARAM lparam) noexcept;

    HWND window_ = nullptr;
};

} // namespace companions
