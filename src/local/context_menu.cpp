#include "local/context_menu.h"

#include "com/guard.h"
#include "local/property_sheet.h"
#include "resources/resource_ids.h"
#include "resources/string_ids.h"
#include "shell_items/sync_page_mode.h"
#include "ui/strings.h"
#include "utils/module.h"

#include <cstddef>
#include <cstdint>
#include <string>

namespace local {

namespace {

enum command : UINT { command_synchronize = 0, command_back_up = 1, command_count };

/// Of the colour 0xFF00FF, a pixel takes that of the faces of buttons.
void replace_background(HBITMAP bitmap) noexcept {
    DIBSECTION section{};
    if (::GetObjectW(bitmap, sizeof(section), &section) != sizeof(section) ||
        section.dsBm.bmBitsPixel != 24) {
        return;
    }
    const COLORREF face = ::GetSysColor(COLOR_BTNFACE);
    auto* row = static_cast<BYTE*>(section.dsBm.bmBits);
    for (LONG y = 0; y < section.dsBm.bmHeight; ++y, row += section.dsBm.bmWidthBytes) {
        for (LONG x = 0; x < section.dsBm.bmWidth; ++x) {
            BYTE* const pixel = row + static_cast<std::ptrdiff_t>(x) * 3;
            if (pixel[0] == 0xFF && pixel[1] == 0 && pixel[2] == 0xFF) {
                pixel[0] = GetBValue(face);
                pixel[1] = GetGValue(face);
                pixel[2] = GetRValue(face);
            }
        }
    }
}

ui::unique_bitmap load_menu_bitmap() noexcept {
    ui::unique_bitmap bitmap(static_cast<HBITMAP>(
        ::LoadImageW(utils::own_module(), MAKEINTRESOURCEW(IDB_SYNC), IMAGE_BITMAP, 0, 0,
                     LR_CREATEDIBSECTION | LR_LOADTRANSPARENT)));
    if (bitmap) {
        replace_background(bitmap.get());
    }
    return bitmap;
}

void insert(HMENU menu, UINT position, UINT id, const std::wstring& text) {
    if (!::InsertMenuW(menu, position, MF_BYPOSITION | MF_STRING, id, text.c_str())) {
        throw com::status_exception(E_FAIL);
    }
}

} // namespace

CShellContextMenu::CShellContextMenu() : m_menu_bitmap(load_menu_bitmap()) {}

HRESULT STDMETHODCALLTYPE CShellContextMenu::Initialize(PCIDLIST_ABSOLUTE, IDataObject* data_object,
                                                        HKEY) {
    m_data_object = data_object;
    return S_OK;
}

HRESULT STDMETHODCALLTYPE CShellContextMenu::QueryContextMenu(HMENU menu, UINT index, UINT first_id,
                                                              UINT last_id, UINT flags) {
    return com::guard([&]() -> HRESULT {
        if ((flags & CMF_DEFAULTONLY) != 0 || last_id < first_id ||
            last_id - first_id < command_count - 1) {
            return MAKE_HRESULT(SEVERITY_SUCCESS, 0, 0);
        }
        const std::wstring synchronize = ui::load_string(IDS_MENU_SYNCHRONIZE_LOCAL);
        const std::wstring back_up = ui::load_string(IDS_MENU_BACK_UP_LOCAL);
        insert(menu, index, first_id + command_synchronize, synchronize);
        // At the same place, so that it stands above.
        insert(menu, index, first_id + command_back_up, back_up);
        for (UINT position = index; position < index + command_count; ++position) {
            ::SetMenuItemBitmaps(menu, position, MF_BYPOSITION, m_menu_bitmap.get(), nullptr);
        }
        return MAKE_HRESULT(SEVERITY_SUCCESS, 0, command_count);
    });
}

HRESULT STDMETHODCALLTYPE CShellContextMenu::InvokeCommand(CMINVOKECOMMANDINFO* info) {
    return com::guard([&] {
        const CMINVOKECOMMANDINFO& invoked = com::required(info);
        const auto verb = reinterpret_cast<std::uintptr_t>(invoked.lpVerb);
        if (!IS_INTRESOURCE(invoked.lpVerb) || verb >= command_count) {
            return E_INVALIDARG;
        }
        if (!m_data_object) {
            return E_UNEXPECTED;
        }
        show_property_sheet(*m_data_object.Get(), invoked.hwnd,
                            verb == command_synchronize ? shell::sync_mode_full
                                                        : shell::sync_mode_backup);
        return S_OK;
    });
}

HRESULT STDMETHODCALLTYPE CShellContextMenu::GetCommandString(UINT_PTR, UINT, UINT*, LPSTR, UINT) {
    return E_INVALIDARG;
}

} // namespace local
