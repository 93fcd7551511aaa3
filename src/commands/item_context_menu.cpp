#include "commands/item_context_menu.h"

#include "com/guard.h"
#include "com/memory.h"
#include "commands/invocation.h"
#include "commands/item_menu.h"
#include "commands/menu_entries.h"
#include "resources/string_ids.h"
#include "shell_items/seams.h"

#include <algorithm>
#include <iterator>
#include <memory>
#include <type_traits>
#include <utility>

namespace commands {

namespace {

using Microsoft::WRL::ComPtr;

/// Hosts that let the user choose by TrackPopupMenu cannot tell the identifier 0 from no choice, so
/// that our offsets begin behind it.
constexpr UINT first_offset = 1;
/// The offsets of `item_command`, and behind them those of the standard entries.
constexpr UINT standard_offset = first_offset + item_restore + 1;

/// What the platform's menu would offer.
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
constexpr UINT offset_count = standard_offset + entry_count;

/// The flags of a menu that gets "Open" alone: that of a double click, and that of a shortcut,
/// whose own Delete and Properties are not those of its target. What else a host says of its menu
/// is for the platform's, and would restrict ours without need.
constexpr UINT open_only_flags = CMF_DEFAULTONLY | CMF_VERBSONLY;

bool is_offered(const standard_entry& entry) {
    return entry.command != DFM_CMD_PROPERTIES || shell::get_seams().dialogs.show_properties;
}

/// The index of the standard entry that is asked for; `entry_count` or more for any other.
UINT find_standard(const invocation& asked) {
    if (asked.verb.empty()) {
        return asked.offset - standard_offset;
    }
    const auto* found = std::ranges::find_if(standard_entries, [&](const standard_entry& entry) {
        return lstrcmpiW(asked.verb.c_str(), entry.verb) == 0;
    });
    return static_cast<UINT>(found - standard_entries);
}

struct menu_closer {
    void operator()(HMENU menu) const noexcept { DestroyMenu(menu); }
};

/// The view in a window of this thread. Wine's view sets no site: the window of its browser answers
/// this message, which no header has, and which another window might take for something else.
ComPtr<IShellView> view_of_window(HWND owner) {
    constexpr UINT get_browser = WM_USER + 7;
    ComPtr<IShellView> view;
    if (owner && FindWindowExW(owner, nullptr, L"SHELLDLL_DefView", nullptr) &&
        GetWindowThreadProcessId(owner, nullptr) == GetCurrentThreadId()) {
        // It stays the window's.
        auto* browser = reinterpret_cast<IShellBrowser*>(SendMessageW(owner, get_browser, 0, 0));
        if (browser) {
            browser->QueryActiveShellView(&view);
        }
    }
    return view;
}

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

CItemContextMenu::CItemContextMenu(HWND owner, ComPtr<IDataObject> data, SFGAOF attributes,
                                   com::unique_id_list first)
    : m_owner(owner), m_object(std::move(data)), m_attributes(attributes),
      m_first(std::move(first)) {}

HRESULT CItemContextMenu::call_back(HWND owner, UINT message, WPARAM parameter, LPARAM data) {
    return item_menu_callback(nullptr, owner, m_object.Get(), message, parameter, data);
}

void CItemContextMenu::insert_standard_entries(HMENU menu, UINT position, UINT first_id) const {
    for (UINT index = 0; index < entry_count; ++index) {
        const standard_entry& entry = standard_entries[index];
        if (!is_offered(entry)) {
            continue;
        }
        if (entry.command == DFM_CMD_PROPERTIES) {
            insert_separator(menu, position++);
        }
        insert_entry(menu, position++, first_id + standard_offset + index, entry.text,
                     is_allowed(entry.needed) ? MFS_ENABLED : MFS_GRAYED);
    }
}

HRESULT CItemContextMenu::QueryContextMenu(HMENU hmenu, UINT indexMenu, UINT idCmdFirst,
                                           UINT idCmdLast, UINT uFlags) {
    return com::guard([&]() -> HRESULT {
        if (idCmdLast < idCmdFirst || idCmdLast - idCmdFirst < offset_count - 1) {
            return E_INVALIDARG;
        }
        // First, as the callback puts its own between what the platform's menu holds.
        const bool open_only = (uFlags & open_only_flags) != 0;
        if (!open_only) {
            insert_standard_entries(hmenu, indexMenu, idCmdFirst);
        }
        QCMINFO info{hmenu, indexMenu, idCmdFirst + first_offset, idCmdLast, nullptr};
        com::check(call_back(m_owner, DFM_MERGECONTEXTMENU,
                             open_only ? CMF_DEFAULTONLY : CMF_NORMAL,
                             reinterpret_cast<LPARAM>(&info)));
        return MAKE_HRESULT(SEVERITY_SUCCESS, 0, offset_count);
    });
}

HRESULT CItemContextMenu::InvokeCommand(CMINVOKECOMMANDINFO* pici) {
    return com::guard([&]() -> HRESULT {
        const CMINVOKECOMMANDINFO& info = com::required(pici);
        const HWND owner = info.hwnd ? info.hwnd : m_owner;
        const invocation asked = read_invocation(info);
        if (asked.verb.empty() && asked.offset >= first_offset && asked.offset < standard_offset) {
            return call_back(owner, DFM_INVOKECOMMAND, asked.offset - first_offset, 0);
        }
        const UINT standard = find_standard(asked);
        if (standard >= entry_count || !is_offered(standard_entries[standard])) {
            return E_INVALIDARG;
        }
        const standard_entry& entry = standard_entries[standard];
        if (!is_allowed(entry.needed)) {
            return E_ACCESSDENIED;
        }
        return entry.command == 0
                   ? rename(owner)
                   : call_back(owner, DFM_INVOKECOMMAND, static_cast<WPARAM>(entry.command), 0);
    });
}

HRESULT CItemContextMenu::rename(HWND owner) {
    ComPtr<IShellView> view = get_active_view();
    if (!view) {
        view = view_of_window(owner);
    }
    if (!view) {
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

} // namespace commands
