#include "commands/background_menu.h"

#include "com/clipboard_formats.h"
#include "com/guard.h"
#include "com/media.h"
#include "commands/invocation.h"
#include "commands/menu_entries.h"
#include "resources/string_ids.h"
#include "shell_items/bind_folder.h"
#include "shell_items/change_notice.h"
#include "ui/message.h"
#include "ui/strings.h"
#include "vfs/exceptions.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <utility>

namespace commands {

namespace {

using Microsoft::WRL::ComPtr;

/// What the entries mean, as offsets from the first identifier.
enum background_command : UINT { new_folder = 0, share = 2, synchronize = 3 };

/// Below it are folders in which others can be made: not the Trash and what others share.
constexpr std::uint32_t first_foreign_folder = vfs::folder_shared_container;

/// The effect that the clipboard's source prefers, but for a link, which the store has none of.
DWORD preferred_effect(IDataObject& object) {
    FORMATETC format{static_cast<CLIPFORMAT>(com::registered_formats.preferred_drop_effect),
                     nullptr, DVASPECT_CONTENT, -1, TYMED_HGLOBAL};
    com::medium medium;
    com::check(object.GetData(&format, medium.put()));
    const com::global_lock lock(medium.get().hGlobal);
    DWORD effect = DROPEFFECT_NONE;
    if (lock.bytes().size() < sizeof(effect)) {
        throw com::status_exception(DV_E_FORMATETC);
    }
    std::memcpy(&effect, lock.bytes().data(), sizeof(effect));
    return effect & ~DWORD{DROPEFFECT_LINK};
}

} // namespace

CBGContextMenu::CBGContextMenu(ComPtr<IShellFolder> folder,
                               std::shared_ptr<vfs::directory> directory, shell::CItemIDList root,
                               shell::CItemIDList path)
    : m_folder(std::move(folder)), m_directory(std::move(directory)), m_root(std::move(root)),
      m_path(std::move(path)) {}

HRESULT CBGContextMenu::QueryContextMenu(HMENU hmenu, UINT indexMenu, UINT idCmdFirst, UINT,
                                         UINT uFlags) {
    return com::guard([&]() -> HRESULT {
        if ((uFlags & CMF_DEFAULTONLY) != 0) {
            return MAKE_HRESULT(SEVERITY_SUCCESS, 0, 1);
        }
        // A new folder appears where the menu did.
        POINT cursor;
        if (GetCursorPos(&cursor)) {
            m_cursor = cursor;
        }
        UINT offsets = 0;
        if (m_directory->get_folder_flags() < first_foreign_folder) {
            insert_separator(hmenu, indexMenu + 1);
            insert_entry(hmenu, indexMenu + 2, idCmdFirst + new_folder, IDS_MENU_NEW_FOLDER);
            offsets = new_folder + 1;
        }
        if (!shell::get_seams().dialogs.show_properties) {
            return MAKE_HRESULT(SEVERITY_SUCCESS, 0, offsets);
        }
        const bool shares = m_directory->is_own_directory();
        if (shares) {
            insert_separator(hmenu, 2);
            insert_entry(hmenu, 3, idCmdFirst + share, IDS_MENU_SHARE);
            offsets = share + 1;
        }
        if (!m_directory->is_root_directory()) {
            if (!shares) {
                insert_separator(hmenu, 2);
            }
            insert_entry(hmenu, shares ? 4 : 3, idCmdFirst + synchronize, IDS_MENU_SYNCHRONIZE);
            offsets = synchronize + 1;
        }
        return MAKE_HRESULT(SEVERITY_SUCCESS, 0, offsets);
    });
}

HRESULT CBGContextMenu::InvokeCommand(CMINVOKECOMMANDINFO* pici) {
    return com::guard([&]() -> HRESULT {
        const CMINVOKECOMMANDINFO& info = com::required(pici);
        const invocation asked = read_invocation(info);
        if (asked.verb == L"paste") {
            paste(info.hwnd);
            return S_OK;
        }
        if (!asked.verb.empty() && asked.verb != L"NewFolder") {
            return E_NOTIMPL;
        }
        // "NewFolder" has no number of its own, so that it is the first.
        switch (asked.offset) {
        case new_folder:
            try {
                make_folder();
            } catch (const vfs::exception&) {
                ui::show_current_failure(info.hwnd);
                return E_FAIL;
            }
            return S_OK;
        case share:
            show_properties(info.hwnd, shell::properties_page::sharing);
            return S_OK;
        case synchronize:
            show_properties(info.hwnd, shell::properties_page::synchronization);
            return S_OK;
        default:
            return E_NOTIMPL;
        }
    });
}

std::wstring CBGContextMenu::free_name() const {
    const std::wstring base = ui::load_string(IDS_NEW_FOLDER_NAME);
    std::wstring name = base;
    try {
        for (int number = 2;; ++number) {
            m_directory->find_item_by_name(name, false);
            name = base + L" (" + std::to_wstring(number) + L")";
        }
    } catch (const vfs::exception&) {
        // A folder that cannot be asked for is told of when it cannot be made.
        return name;
    }
}

void CBGContextMenu::make_folder() {
    const shell::PIDLDATA made(m_directory->create_directory(free_name()));
    shell::CItemIDList list = m_root + m_path;
    list.append(made);
    shell::notify_change(SHCNE_MKDIR, list);
    edit_name(made);
}

void CBGContextMenu::edit_name(const shell::PIDLDATA& made) const {
    const ComPtr<IShellView> view = get_active_view();
    if (!view) {
        return;
    }
    const com::unique_id_list item = shell::CItemIDList(made).to_list();
    constexpr UINT edited = SVSI_EDIT | SVSI_ENSUREVISIBLE;
    ComPtr<IShellView2> places;
    POINT position = m_cursor.value_or(POINT{});
    if (!m_cursor || FAILED(view.As(&places)) ||
        FAILED(places->SelectAndPositionItem(item.get(), edited | SVSI_TRANSLATEPT, &position))) {
        view->SelectItem(item.get(), edited);
    }
}

void CBGContextMenu::paste(HWND owner) const {
    ComPtr<IDataObject> data;
    com::check(OleGetClipboard(&data));
    DWORD effect = preferred_effect(*data.Get());
    ComPtr<IDropTarget> target;
    com::check(m_folder->CreateViewObject(owner, IID_PPV_ARGS(&target)));
    const DWORD allowed = effect;
    com::check(target->DragEnter(data.Get(), MK_LBUTTON, POINTL{}, &effect));
    effect = allowed;
    com::check(target->Drop(data.Get(), MK_LBUTTON, POINTL{}, &effect));
}

void CBGContextMenu::show_properties(HWND owner, shell::properties_page page) const {
    const auto show = shell::get_seams().dialogs.show_properties;
    if (!show || m_path.count() == 0) {
        throw com::status_exception(E_NOTIMPL);
    }
    // A folder's properties are those of an item of its parent.
    shell::CItemIDList way;
    for (std::size_t level = 0; level + 1 < m_path.count(); ++level) {
        way.append(m_path.records()[level]);
    }
    const ComPtr<IShellFolder> parent = shell::bind_folder(m_root, way);
    const com::unique_id_list own = shell::CItemIDList(m_path.last()).to_list();
    const ITEMIDLIST* item = own.get();
    ComPtr<IDataObject> data;
    com::check(parent->GetUIObjectOf(owner, 1, &item, IID_IDataObject, nullptr, &data));
    com::check(show(*data.Get(), owner, page));
}

HRESULT CBGContextMenu::GetCommandString(UINT_PTR, UINT, UINT*, CHAR*, UINT) {
    return E_NOTIMPL;
}

} // namespace commands
