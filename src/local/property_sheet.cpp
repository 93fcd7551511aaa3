#include "local/property_sheet.h"

#include "com/guard.h"
#include "com/memory.h"
#include "local/class_keys.h"
#include "local/registered_pages.h"
#include "resources/string_ids.h"
#include "shell_items/id_list_array.h"
#include "shell_items/sync_page_mode.h"
#include "ui/strings.h"
#include "ui/visual_styles.h"

#include <commctrl.h>
#include <shellapi.h>
#include <shlobj.h>
#include <wrl/client.h>

#include <array>
#include <string>
#include <vector>

namespace local {

namespace {

using Microsoft::WRL::ComPtr;

/// The platform's own pages of files and folders.
constexpr CLSID default_pages = {
    0x21b22460, 0x3aea, 0x1069, {0xa2, 0xdc, 0x08, 0x00, 0x2b, 0x30, 0x30, 0x9d}};

/// In no header, and not in all versions of the platform.
using open_function = BOOL WINAPI(LPCWSTR caption, HKEY* keys, UINT count, const CLSID* pages,
                                  IDataObject* items, IUnknown* browser, LPCWSTR start_page);

open_function* find_platform_sheet() noexcept {
    return reinterpret_cast<open_function*>(reinterpret_cast<void (*)()>(
        ::GetProcAddress(::GetModuleHandleW(L"shell32.dll"), "SHOpenPropSheetW")));
}

std::wstring caption_of(const shell::id_list_array& items) {
    SHFILEINFOW info{};
    ::SHGetFileInfoW(reinterpret_cast<LPCWSTR>(items.absolute(0).get()), 0, &info, sizeof(info),
                     SHGFI_PIDL | SHGFI_DISPLAYNAME);
    return ui::load_string(items.count() == 1 ? IDS_PROPERTIES_OF : IDS_PROPERTIES_OF_SEVERAL,
                           {info.szDisplayName});
}

/// The index of the page with this title, 0 without one.
int find_page(HWND sheet, const std::wstring& title) {
    const HWND tabs = PropSheet_GetTabControl(sheet);
    const auto count = static_cast<int>(::SendMessageW(tabs, TCM_GETITEMCOUNT, 0, 0));
    for (int index = 0; index < count; ++index) {
        std::array<wchar_t, 256> text{};
        TCITEMW item{};
        item.mask = TCIF_TEXT;
        item.pszText = text.data();
        item.cchTextMax = static_cast<int>(text.size());
        ::SendMessageW(tabs, TCM_GETITEMW, static_cast<WPARAM>(index),
                       reinterpret_cast<LPARAM>(&item));
        if (title == text.data()) {
            return index;
        }
    }
    return 0;
}

/// Wine's sheets do not begin at a page by its title.
int CALLBACK start_at_page(HWND sheet, UINT message, LPARAM) noexcept {
    if (message == PSCB_INITIALIZED) {
        com::guard([&] {
            const int page = find_page(sheet, ui::load_string(IDS_LOCAL_SYNC_PAGE));
            ::PostMessageW(sheet, PSM_SETCURSEL, static_cast<WPARAM>(page), 0);
        });
    }
    return 0;
}

void show_own_sheet(IDataObject& items, const std::wstring& caption,
                    const std::vector<utils::unique_registry_key>& keys, HWND owner) {
    registered_pages pages(items, keys);
    if (pages.get().empty()) {
        throw com::status_exception(E_FAIL);
    }
    std::vector<HPROPSHEETPAGE> taken = pages.get();
    PROPSHEETHEADERW header{};
    header.dwSize = sizeof(header);
    header.dwFlags = PSH_NOCONTEXTHELP | PSH_USECALLBACK;
    header.hwndParent = owner;
    header.pszCaption = caption.c_str();
    header.nPages = static_cast<UINT>(taken.size());
    header.phpage = taken.data();
    header.pfnCallback = &start_at_page;
    const ui::visual_styles styles;
    if (::PropertySheetW(&header) < 0) {
        throw com::status_exception(E_FAIL);
    }
    pages.release();
}

} // namespace

void show_property_sheet(IDataObject& items, HWND owner, int mode) {
    const shell::id_list_array lists(items);
    const std::vector<utils::unique_registry_key> keys = class_keys_of(lists.absolute(0).get());
    const shell::sync_page_mode_scope scope(mode);
    open_function* const open = find_platform_sheet();
    if (!open) {
        show_own_sheet(items, caption_of(lists), keys, owner);
        return;
    }
    std::vector<HKEY> opened;
    for (const utils::unique_registry_key& key : keys) {
        opened.push_back(key.get());
    }
    if (!open(nullptr, opened.data(), static_cast<UINT>(opened.size()), &default_pages, &items,
              nullptr, ui::load_string(IDS_LOCAL_SYNC_PAGE).c_str())) {
        throw com::status_exception(E_FAIL);
    }
}

HRESULT back_up_profile(HWND owner) {
    return com::guard([&] {
        std::array<wchar_t, MAX_PATH> profile{};
        com::check(::SHGetFolderPathW(nullptr, CSIDL_PROFILE, nullptr, SHGFP_TYPE_CURRENT,
                                      profile.data()));
        const std::wstring path = profile.data();
        const std::size_t cut = path.rfind(L'\\');
        if (cut == std::wstring::npos) {
            throw com::status_exception(E_FAIL);
        }
        // As a whole the path could lead to the user's folder on the desktop, which is no local
        // one.
        const auto parse = [](IShellFolder& folder, std::wstring name) {
            ITEMIDLIST* list = nullptr;
            com::check(
                folder.ParseDisplayName(nullptr, nullptr, name.data(), nullptr, &list, nullptr));
            return com::unique_id_list(list);
        };
        ComPtr<IShellFolder> desktop;
        com::check(::SHGetDesktopFolder(&desktop));
        ComPtr<IShellFolder> parent;
        com::check(desktop->BindToObject(parse(*desktop.Get(), path.substr(0, cut)).get(), nullptr,
                                         IID_PPV_ARGS(&parent)));
        const com::unique_id_list child = parse(*parent.Get(), path.substr(cut + 1));
        const ITEMIDLIST* selected = child.get();
        ComPtr<IDataObject> items;
        com::check(parent->GetUIObjectOf(owner, 1, &selected, IID_IDataObject, nullptr,
                                         reinterpret_cast<void**>(items.GetAddressOf())));
        show_property_sheet(*items.Get(), owner, shell::sync_mode_backup);
    });
}

} // namespace local
