#include "dialogs/sync/sync_failure.h"

#include "com/guard.h"
#include "ui/message.h"
#include "utils/narrow.h"
#include "vfs/exceptions.h"

#include <array>
#include <exception>

namespace dialogs {

namespace {

std::wstring text_of_status(HRESULT status) {
    std::array<wchar_t, 512> text{};
    const DWORD length = FormatMessageW(FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS,
                                        nullptr, static_cast<DWORD>(status), 0, text.data(),
                                        static_cast<DWORD>(text.size()), nullptr);
    return length == 0 ? L"Unknown error" : std::wstring(text.data(), length);
}

std::wstring text_of_current_failure() {
    try {
        throw;
    } catch (const vfs::exception& failure) {
        return failure.get_description();
    } catch (const std::exception& failure) {
        return utils::widen(utils::narrow_message(failure));
    } catch (const com::status_exception& failure) {
        return text_of_status(failure.status());
    } catch (...) {
        return L"Unknown error";
    }
}

} // namespace

void show_sync_failure(HWND owner, const std::wstring& caption, UINT style) noexcept {
    try {
        ui::show_message(owner, caption, text_of_current_failure(), style);
    } catch (...) {
        // No memory for the texts.
        MessageBoxW(owner, L"Unknown error", caption.c_str(), style);
    }
}

} // namespace dialogs
