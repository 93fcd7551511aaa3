#include "ui/message.h"

#include "ui/strings.h"
#include "vfs/exceptions.h"

#include <exception>

namespace ui {

namespace {

void rethrow_and_show(HWND owner, const char* caption, UINT style) {
    try {
        throw;
    } catch (const vfs::exception& failure) {
        MessageBoxW(owner, failure.get_description().c_str(), failure.get_name().c_str(),
                    MB_OK | MB_ICONSTOP);
    } catch (const std::exception& failure) {
        MessageBoxA(owner, failure.what(), caption, style);
    } catch (...) {
        MessageBoxA(owner, "Unknown error", caption, style);
    }
}

} // namespace

int show_message(HWND owner, UINT caption, UINT text, std::initializer_list<std::wstring> values,
                 UINT style) {
    return MessageBoxW(owner, load_string(text, values).c_str(), load_string(caption).c_str(),
                       style);
}

void show_current_failure(HWND owner, const char* caption, UINT style) noexcept {
    try {
        rethrow_and_show(owner, caption, style);
    } catch (...) {
        // No memory for the texts of a `vfs::exception`.
        MessageBoxA(owner, "Unknown error", caption, style);
    }
}

} // namespace ui
