#pragma once

#include <windows.h>

#include <initializer_list>
#include <string>

struct IUnknown;

namespace ui {

/// What code without windows asks its user through. Both operations answer the button, an `ID`
/// value, and may block for as long as the user thinks. `style` is that of `MessageBoxW`.
class prompt {
public:
    /// Asks string `text` filled with `values` under string `caption`, both numbers of texts.
    /// Values that the text has no room for are not shown.
    virtual int ask(UINT caption, UINT text, std::initializer_list<std::wstring> values,
                    UINT style) = 0;
    /// Asks in words that came from elsewhere.
    virtual int ask(const std::wstring& caption, const std::wstring& text, UINT style) = 0;

protected:
    ~prompt() = default;
};

/// Asks by message boxes on top of `owner` or, with a progress dialog, on top of that. Belongs to
/// the thread whose boxes they are.
class message_prompt final : public prompt {
public:
    /// `progress`, which may be null, must outlive this.
    constexpr explicit message_prompt(HWND owner, IUnknown* progress = nullptr) noexcept
        : owner_(owner), progress_(progress) {}

    int ask(UINT caption, UINT text, std::initializer_list<std::wstring> values,
            UINT style) override;
    int ask(const std::wstring& caption, const std::wstring& text, UINT style) override;

private:
    HWND owner_;
    IUnknown* progress_;
};

} // namespace ui
