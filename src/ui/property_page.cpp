#include "ui/property_page.h"

#include "ui/message.h"
#include "ui/visual_styles.h"
#include "utils/exceptions.h"
#include "utils/module.h"

#include <source_location>

namespace ui {

HPROPSHEETPAGE property_page::create_page(std::unique_ptr<property_page> page,
                                          const std::wstring& title) {
    PROPSHEETPAGEW description{};
    description.dwSize = sizeof(description);
    description.dwFlags = PSP_USETITLE | PSP_USECALLBACK;
    description.hInstance = utils::own_module();
    description.pszTemplate = MAKEINTRESOURCEW(page->get_resource());
    description.pszTitle = title.c_str();
    description.pfnDlgProc = &page_proc;
    description.lParam = reinterpret_cast<LPARAM>(page.get());
    description.pfnCallback = &page_callback;
    const visual_styles styles;
    const HPROPSHEETPAGE made = CreatePropertySheetPageW(&description);
    if (!made) {
        throw utils::system_error_exception(std::source_location::current().function_name(),
                                            "::CreatePropertySheetPageW(&description)",
                                            GetLastError());
    }
    static_cast<void>(page.release());
    return made;
}

void property_page::set_changed(bool changed) noexcept {
    SendMessageW(GetParent(handle()), changed ? PSM_CHANGED : PSM_UNCHANGED,
                 reinterpret_cast<WPARAM>(handle()), 0);
}

std::optional<LRESULT> property_page::on_message(UINT message, WPARAM, LPARAM lparam) {
    if (message == WM_NOTIFY && reinterpret_cast<const NMHDR*>(lparam)->code == PSN_APPLY) {
        return on_apply() ? PSNRET_NOERROR : PSNRET_INVALID_NOCHANGEPAGE;
    }
    return std::nullopt;
}

INT_PTR CALLBACK property_page::page_proc(HWND window, UINT message, WPARAM wparam,
                                          LPARAM lparam) noexcept {
    if (message != WM_INITDIALOG) {
        return dialog_proc(window, message, wparam, lparam);
    }
    auto* const self =
        reinterpret_cast<property_page*>(reinterpret_cast<PROPSHEETPAGEW*>(lparam)->lParam);
    self->attach(window);
    try {
        return self->on_init();
    } catch (...) {
        // A page cannot refuse to come up: it stays as its template made it.
        show_current_failure(window);
        return TRUE;
    }
}

UINT CALLBACK property_page::page_callback(HWND, UINT message, PROPSHEETPAGEW* page) noexcept {
    if (message == PSPCB_RELEASE) {
        const std::unique_ptr<property_page> self(reinterpret_cast<property_page*>(page->lParam));
        self->destroy();
    }
    // For PSPCB_CREATE: the window may be made.
    return TRUE;
}

} // namespace ui
