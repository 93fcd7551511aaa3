#include "ui/message.h"

#include "ui/strings.h"
#include "ui/visual_styles.h"
#include "utils/narrow.h"
#include "vfs/exceptions.h"

#include <oleidl.h>
#include <wrl/client.h>

#include <exception>

namespace ui {

namespace {

void rethrow_and_show(HWND owner, const char* caption, UINT style) {
    try {
        throw;
    } catch (const vfs::exception& failure) {
        show_message(owner, failure.get_name(), failure.get_description(), MB_OK | MB_ICONSTOP);
    } catch (const std::exception& failure) {
        MessageBoxA(owner, utils::narrow_message(failure).c_str(), caption, style);
    } catch (...) {
        MessageBoxA(owner, "Unknown error", caption, style);
    }
}

} // namespace

HWND window_over(HWND owner, IUnknown* progress) noexcept {
    Microsoft::WRL::ComPtr<IOleWindow> shown;
    HWND window = nullptr;
    if (progress && SUCCEEDED(progress->QueryInterface(IID_PPV_ARGS(&shown))) &&
        SUCCEEDED(shown->GetWindow(&window)) && window) {
        return window;
    }
    return owner;
}

int show_message(HWND owner, const std::wstring& caption, const std::wstring& text,
                 UINT style) noexcept {
    const visual_styles styles;
    return MessageBoxW(owner, text.c_str(), caption.c_str(), style);
}

int show_message(HWND owner, UINT caption, UINT text, std::initializer_list<std::wstring> values,
                 UINT style, IUnknown* progress) {
    return show_message(window_over(owner, progress), load_string(caption),
                        load_string(text, values), style);
}

void show_current_failure(HWND owner, const char* caption, UINT style) noexcept {
    const visual_styles styles;
    try {
        rethrow_and_show(owner, caption, style);
    } catch (...) {
        // No memory for the texts of a `vfs::exception`.
        MessageBoxA(owner, "Unknown error", caption, style);
    }
}

} // namespace ui
