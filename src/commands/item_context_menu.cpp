#include "commands/item_context_menu.h"

#include "com/guard.h"
#include "com/memory.h"
#include "commands/item_menu.h"
#include "commands/menu_entries.h"
#include "resources/string_ids.h"

#include <algorithm>
#include <cstdint>
#include <iterator>
#include <memory>
#include <optional>
#include <string>
#include <utility>

namespace commands {

namespace {

/// CMIC_MASK_UNICODE, whose own definition names another header's.
constexpr DWORD unicode_mask = 0x4000;

using Microsoft::WRL::ComPtr;

/// Hosts that let the user choose by TrackPopupMenu cannot tell the identifier 0 from no choice, so
/// that our offsets begin behind it.
constexpr UINT first_offset = 1;
/// The offsets of `item_command`, and behind them those of the standard entries.
constexpr UINT standard_offset = first_offset + item_restore + 1;

struct standard_entry {
    const wchar_t* verb;
    const char* narrow_verb;
    UINT text;
    SFGAOF needed; ///< the attribute without which it is grey
    UINT command;  ///< of the callback; 0: none of its own
};

constexpr standard_entry standard_entries[] = {
    {L"delete", "delete", IDS_MENU_DELETE, SFGAO_CANDELETE, DFM_CMD_DELETE},
    {L"rename", "rename", IDS_MENU_RENAME, SFGAO_CANRENAME, 0},
    {L"properties", "properties", IDS_MENU_PROPERTIES, SFGAO_HASPROPSHEET, DFM_CMD_PROPERTIES},
};

constexpr auto entry_count = static_cast<UINT>(std::size(standard_entries));

/// The index of the standard entry of that name.
std::optional<std::size_t> find_verb(const CMINVOKECOMMANDINFO& info) {
    const bool wide = info.cbSize >= sizeof(CMINVOKECOMMANDINFOEX) &&
                      (info.fMask & unicode_mask) != 0 &&
                      reinterpret_cast<const CMINVOKECOMMANDINFOEX&>(info).lpVerbW != nullptr;
    const auto* found = std::ranges::find_if(standard_entries, [&](const standard_entry& entry) {
        return wide ? lstrcmpiW(reinterpret_cast<const CMINVOKECOMMANDINFOEX&>(info).lpVerbW,
                                entry.verb) == 0
                    : lstrcmpiA(info.lpVerb, entry.narrow_verb) == 0;
    });
    return found == std::end(standard_entries)
               ? std::nullopt
               : std::optional(static_cast<std::size_t>(found - standard_entries));
}

struct menu_closer {
    void operator()(HMENU menu) const noexcept { DestroyMenu(menu); }
};

thread_local bool called_back = false;

HRESULT CALLBACK note_call(IShellFolder*, HWND, IDataObject*, UINT, WPARAM, LPARAM) noexcept {
    called_back = true;
    return E_NOTIMPL;
}

bool try_platform_menu() {
    called_back = false;
    ComPtr<IShellFolder> desktop;
    ITEMIDLIST* list = nullptr;
    if (FAILED(SHGetDesktopFolder(&desktop)) ||
        FAILED(SHGetSpecialFolderLocation(nullptr, CSIDL_DRIVES, &list))) {
        return true;
    }
    const com::unique_id_list computer(list);
    const ITEMIDLIST desktop_list{};
    const ITEMIDLIST* items[] = {computer.get()};
    ComPtr<IContextMenu> menu;
    const std::unique_ptr<std::remove_pointer_t<HMENU>, menu_closer> popup(CreatePopupMenu());
    if (SUCCEEDED(CDefFolderMenu_Create2(&desktop_list, nullptr, 1, items, desktop.Get(), note_call,
                                         0, nullptr, &menu))) {
        menu->QueryContextMenu(popup.get(), 0, 1, 0x7FFF, CMF_NORMAL);
    }
    return called_back;
}

} // namespace

bool platform_menu_calls_back() {
    static const bool calls = try_platform_menu();
    return calls;
}

CItemContextMenu::CItemContextMenu(HWND owner, ComPtr<IShellFolder> folder,
                                   ComPtr<IDataObject> data, SFGAOF attributes,
                                   com::unique_id_list first)
    : m_owner(owner), m_folder(std::move(folder)), m_object(std::move(data)),
      m_attributes(attributes), m_first(std::move(first)) {}

HRESULT CItemContextMenu::call_back(HWND owner, UINT message, WPARAM parameter, LPARAM data) {
    return item_menu_callback(m_folder.Get(), owner, m_object.Get(), message, parameter, data);
}

HRESULT CItemContextMenu::QueryContextMenu(HMENU hmenu, UINT indexMenu, UINT idCmdFirst,
                                           UINT idCmdLast, UINT uFlags) {
    return com::guard([&]() -> HRESULT {
        if (idCmdLast < idCmdFirst + standard_offset + entry_count) {
            return E_INVALIDARG;
        }
        // What else a host says of its menu is for the platform's, and would restrict ours.
        const UINT flags = uFlags & CMF_DEFAULTONLY;
        const int before = GetMenuItemCount(hmenu);
        QCMINFO info{hmenu, indexMenu, idCmdFirst + first_offset, idCmdLast, nullptr};
        com::check(
            call_back(m_owner, DFM_MERGECONTEXTMENU, flags, reinterpret_cast<LPARAM>(&info)));
        if ((uFlags & (CMF_DEFAULTONLY | CMF_VERBSONLY)) == 0) {
            auto position = indexMenu + static_cast<UINT>(GetMenuItemCount(hmenu) - before);
            insert_separator(hmenu, position++);
            for (UINT index = 0; index < entry_count; ++index) {
                const standard_entry& entry = standard_entries[index];
                insert_entry(hmenu, position++, idCmdFirst + standard_offset + index, entry.text,
                             (m_attributes & entry.needed) != 0 ? MFS_ENABLED : MFS_GRAYED);
            }
        }
        return MAKE_HRESULT(SEVERITY_SUCCESS, 0, standard_offset + entry_count);
    });
}

HRESULT CItemContextMenu::InvokeCommand(CMINVOKECOMMANDINFO* pici) {
    return com::guard([&]() -> HRESULT {
        const CMINVOKECOMMANDINFO& info = com::required(pici);
        const HWND owner = info.hwnd ? info.hwnd : m_owner;
        std::size_t standard = 0;
        if (IS_INTRESOURCE(info.lpVerb)) {
            const auto offset = static_cast<UINT>(reinterpret_cast<std::uintptr_t>(info.lpVerb));
            if (offset >= first_offset && offset < standard_offset) {
                return call_back(owner, DFM_INVOKECOMMAND, offset - first_offset, 0);
            }
            standard = offset - standard_offset;
        } else {
            standard = find_verb(info).value_or(entry_count);
        }
        if (standard >= entry_count) {
            return E_INVALIDARG;
        }
        const standard_entry& entry = standard_entries[standard];
        if ((m_attributes & entry.needed) == 0) {
            return E_ACCESSDENIED;
        }
        return entry.command == 0
                   ? rename()
                   : call_back(owner, DFM_INVOKECOMMAND, static_cast<WPARAM>(entry.command), 0);
    });
}

HRESULT CItemContextMenu::rename() {
    ComPtr<IServiceProvider> provider;
    ComPtr<IShellBrowser> browser;
    ComPtr<IShellView> view;
    if (!m_site || FAILED(m_site.As(&provider)) ||
        FAILED(provider->QueryService(SID_SShellBrowser, IID_PPV_ARGS(&browser))) ||
        FAILED(browser->QueryActiveShellView(&view))) {
        return E_FAIL;
    }
    return view->SelectItem(m_first.get(),
                            SVSI_EDIT | SVSI_ENSUREVISIBLE | SVSI_SELECT | SVSI_DESELECTOTHERS);
}

HRESULT CItemContextMenu::GetCommandString(UINT_PTR idCmd, UINT uType, UINT*, CHAR* pszName,
                                           UINT cchMax) {
    const UINT_PTR index = idCmd - standard_offset;
    if (index >= entry_count) {
        return E_INVALIDARG;
    }
    switch (uType) {
    case GCS_VALIDATEA:
    case GCS_VALIDATEW:
        return S_OK;
    case GCS_VERBA:
        return pszName && lstrcpynA(pszName, standard_entries[index].narrow_verb,
                                    static_cast<int>(cchMax))
                   ? S_OK
                   : E_POINTER;
    case GCS_VERBW:
        return pszName && lstrcpynW(reinterpret_cast<wchar_t*>(pszName),
                                    standard_entries[index].verb, static_cast<int>(cchMax))
                   ? S_OK
                   : E_POINTER;
    default:
        return E_NOTIMPL;
    }
}

HRESULT CItemContextMenu::SetSite(IUnknown* pUnkSite) {
    m_site = pUnkSite;
    return S_OK;
}

HRESULT CItemContextMenu::GetSite(REFIID riid, void** ppvSite) {
    return com::guard([&]() -> HRESULT {
        com::cleared(ppvSite);
        return m_site ? m_site->QueryInterface(riid, ppvSite) : E_FAIL;
    });
}

} // namespace commands
