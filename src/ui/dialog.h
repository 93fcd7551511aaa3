#pragma once

#include <windows.h>

#include <exception>
#include <optional>
#include <string>

namespace ui {

/// A dialog made from a template among the resources of this module, modal or modeless. An object
/// belongs to the thread that shows it, and has one window at a time.
class dialog {
public:
    /// `resource` is the number of the template.
    explicit dialog(UINT resource) noexcept : resource_(resource) {}

    dialog(const dialog&) = delete;
    dialog& operator=(const dialog&) = delete;
    /// Destroys a window that is still there, without a word to derived classes.
    virtual ~dialog();

    /// Ends the window, if there is one, while the whole object answers its last messages. Not for
    /// a modal dialog that is shown. A class that is asked at the end, or has a layer over a
    /// control among its members, does this first in its destructor.
    void destroy() noexcept;

    /// Shows the window until `end` is called, and answers what that was given. Throws
    /// `utils::system_error_exception` when there can be no window, and what `on_init` threw.
    INT_PTR do_modal(HWND owner);

    /// Makes a modeless window, a child of `parent` where the template says so. It is shown when
    /// the template says so. Throws like `do_modal`.
    void create(HWND parent);

    /// Null while there is no window.
    HWND handle() const noexcept { return window_; }

protected:
    /// The window is there and not shown yet. True leaves the focus to the platform, which gives it
    /// to the first control; false when it was set here.
    virtual bool on_init() { return true; }

    /// A command of control `id`, or of a key: `code` is then `BN_CLICKED` too. True when it is
    /// done. What this and `on_message` throw is shown to the user.
    virtual bool on_command([[maybe_unused]] int id, [[maybe_unused]] int code) { return false; }

    /// Any other message. The answer when it is done, otherwise nothing.
    virtual std::optional<LRESULT> on_message([[maybe_unused]] UINT message,
                                              [[maybe_unused]] WPARAM wparam,
                                              [[maybe_unused]] LPARAM lparam) {
        return std::nullopt;
    }

    /// Ends a modal dialog; its window goes when the message at hand is done.
    void end(INT_PTR result) noexcept { EndDialog(window_, result); }

    UINT get_resource() const noexcept { return resource_; }

    /// Makes `window`, whose procedure is `dialog_proc`, the one of this object.
    void attach(HWND window) noexcept;

    static INT_PTR CALLBACK dialog_proc(HWND window, UINT message, WPARAM wparam,
                                        LPARAM lparam) noexcept;

    HWND control(int id) const noexcept { return GetDlgItem(window_, id); }

    /// Gives a control the focus as the Tab key does, the default button following.
    void focus(HWND control) const noexcept {
        SendMessageW(window_, WM_NEXTDLGCTL, reinterpret_cast<WPARAM>(control), TRUE);
    }

    std::wstring get_text(int id) const;

    void set_text(int id, const std::wstring& text) noexcept {
        SetDlgItemTextW(window_, id, text.c_str());
    }

    bool is_checked(int id) const noexcept {
        return IsDlgButtonChecked(window_, id) == BST_CHECKED;
    }

    void set_checked(int id, bool checked) noexcept {
        CheckDlgButton(window_, id, checked ? BST_CHECKED : BST_UNCHECKED);
    }

private:
    INT_PTR init(HWND window) noexcept;
    INT_PTR dispatch(UINT message, WPARAM wparam, LPARAM lparam);
    /// Raises what `on_init` threw, or otherwise, where there is no window, the platform's error.
    void check_creation(bool created, const char* call);

    UINT resource_;
    HWND window_ = nullptr;
    std::exception_ptr init_failure_;
};

} // namespace ui
