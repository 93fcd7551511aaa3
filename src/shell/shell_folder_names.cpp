/// The names of a folder's items: as hosts are shown them, as they are parsed and changed.
#include "com/memory.h"
#include "shell/item_attributes.h"
#include "shell/save_as_list.h"
#include "shell/shell_folder.h"
#include "shell_items/change_notice.h"
#include "shell_items/host_process.h"
#include "shell_items/local_name.h"
#include "shell_items/local_paths.h"
#include "syncer/manager.h"
#include "ui/message.h"
#include "utils/module.h"
#include "vfs/exceptions.h"
#include "vfs_quilldeck/session/session.h"

#include <filesystem>
#include <system_error>

namespace shell {

using com::guard;
using Microsoft::WRL::ComPtr;

namespace {

constexpr wchar_t separator = L'\\';

/// Whether a dialog that makes new files asks.
bool may_create(IBindCtx* context) {
    BIND_OPTS options{};
    options.cbStruct = sizeof(options);
    return context && SUCCEEDED(context->GetBindOptions(&options)) &&
           options.grfMode == STGM_CREATE;
}

} // namespace

std::wstring CShellFolderImpl::get_path_prefix() const {
    return m_path.count() == 0 ? std::wstring() : m_path.path_string() + separator;
}

std::wstring CShellFolderImpl::get_local_path_prefix() const {
    return m_path.count() == 0 ? std::wstring() : local_path(m_path) + separator;
}

std::wstring CShellFolderImpl::get_root_prefix(SHGDNF flags) const {
    const com::unique_id_list root = m_root.to_list();
    if (!root) {
        throw com::status_exception(E_OUTOFMEMORY);
    }
    ComPtr<IShellFolder> desktop;
    com::check(SHGetDesktopFolder(&desktop));
    STRRET name{};
    com::check(desktop->GetDisplayNameOf(root.get(),
                                         SHGDN_FORPARSING | (flags & SHGDN_FORADDRESSBAR), &name));
    wchar_t* text = nullptr;
    com::check(StrRetToStrW(&name, root.get(), &text));
    const com::task_ptr<wchar_t> owned(text);
    return std::wstring(text) + separator;
}

std::wstring CShellFolderImpl::get_user_name() const {
    // Read from what this process or the session process holds: the store is not asked.
    const vfs::user_info user =
        m_client ? m_client->get_user_info() : vfs_quilldeck::get_user_info(utils::own_module());
    return user.user_name;
}

std::wstring CShellFolderImpl::get_local_path(const CItemIDList& list) const {
    const bool is_directory = list.count() > 0 && list.last().is_directory();
    const std::wstring below = local_path(list);
    std::wstring path = syncer::manager::get_files_saved_directory(get_user_name()).native() +
                        separator + get_local_path_prefix();
    if (is_directory) {
        path += below;
    }
    // The host may find no folder there; the name stays the right one.
    std::error_code ignored;
    std::filesystem::create_directories(path, ignored);
    if (!is_directory) {
        path += below;
    }
    return path;
}

std::wstring CShellFolderImpl::get_display_name(const CItemIDList& list, SHGDNF flags) const {
    if ((flags & SHGDN_INFOLDER) || !(flags & SHGDN_FORPARSING)) {
        return list.path_string();
    }
    if (!(flags & SHGDN_FORADDRESSBAR) && !is_file_manager()) {
        return get_local_path(list);
    }
    return get_root_prefix(flags) + get_path_prefix() + list.path_string();
}

HRESULT CShellFolderImpl::GetDisplayNameOf(PCUITEMID_CHILD list, SHGDNF flags, STRRET* result) {
    return guard([&] {
        com::cleared(result);
        if (!list) {
            return E_INVALIDARG;
        }
        auto text = com::duplicate_string(get_display_name(CItemIDList(list, false), flags));
        result->uType = STRRET_WSTR;
        result->pOleStr = text.release();
        return S_OK;
    });
}

HRESULT CShellFolderImpl::ParseDisplayName(HWND owner, IBindCtx* context, LPWSTR text, ULONG* eaten,
                                           PIDLIST_RELATIVE* result, ULONG* attributes) {
    return guard([&] {
        com::cleared(result);
        if (!text) {
            return E_INVALIDARG;
        }
        com::check(ensure_connected(owner, true));
        ULONG parsed = 0;
        if (eaten) {
            *eaten = 0;
        }
        const CItemIDList list = parse(context, text, parsed);
        if (attributes) {
            // What does not exist yet has none.
            const PIDLDATA& last = list.last();
            *attributes &= last.type ? get_attributes(last, is_file_manager()) : 0;
        }
        if (eaten) {
            *eaten = parsed;
        }
        *result = list.to_list().release();
        return *result ? S_OK : E_OUTOFMEMORY;
    });
}

std::vector<std::wstring> CShellFolderImpl::get_prefixes() const {
    std::vector<std::wstring> prefixes{get_root_prefix(SHGDN_NORMAL),
                                       get_root_prefix(SHGDN_FORADDRESSBAR)};
    try {
        prefixes.push_back(files_saved_folder(get_user_name()) + separator);
    } catch (const std::bad_alloc&) {
        throw;
    } catch (const std::exception&) {
        // There can be no such folder, so that no host was ever told a path in it.
    }
    return prefixes;
}

CItemIDList CShellFolderImpl::parse(IBindCtx* context, std::wstring text, ULONG& eaten) {
    CItemIDList list;
    vfs::item_ptr item = m_item;
    for (const std::wstring& prefix : get_prefixes()) {
        if (text.starts_with(prefix)) {
            list = m_root;
            item = m_client->get_root();
            text.erase(0, prefix.size());
            eaten += static_cast<ULONG>(prefix.size());
            break;
        }
    }
    for (std::size_t begin = 0; begin <= text.size();) {
        const std::size_t end = std::min(text.find(separator, begin), text.size());
        const std::wstring part = text.substr(begin, end - begin);
        const auto directory = std::dynamic_pointer_cast<vfs::directory>(item);
        if (!directory) {
            throw com::status_exception(E_FAIL);
        }
        try {
            item = directory->find_item_by_name(part, false);
            list.append(PIDLDATA(item));
            eaten += static_cast<ULONG>(part.size() + 1);
        } catch (const vfs::exception&) {
            // Only the last part may be a file that is yet to be made.
            if (end != text.size() || !may_create(context)) {
                throw com::status_exception(E_FAIL);
            }
            append_new_file(list, part);
        }
        begin = end + 1;
    }
    return list;
}

void CShellFolderImpl::append_new_file(CItemIDList& list, const std::wstring& name) const {
    PIDLDATA record;
    record.set_name(local_name(name));
    list.append(record);
    const std::wstring path =
        filter_folder() + separator + get_local_path_prefix() + local_path(list);
    try {
        add_to_save_as_list(path);
    } catch (const std::exception&) {
        // The dialog goes on: the file can still be written, though it will not go up by itself.
    } catch (const vfs::exception&) {
        // The same, where the list is no list.
    }
}

HRESULT CShellFolderImpl::SetNameOf(HWND owner, PCUITEMID_CHILD list, LPCWSTR name, SHGDNF flags,
                                    PITEMID_CHILD* result) {
    return guard([&] {
        if (result) {
            *result = nullptr;
        }
        CItemIDList item(list, false);
        if (item.count() != 1 || !name) {
            return E_INVALIDARG;
        }
        com::check(ensure_connected(owner, true));
        const CItemIDList old_path = m_root + m_path + item;
        const std::wstring old_name = item.last().get_name();
        std::wstring new_name = name;
        if (!(flags & SHGDN_INFOLDER) && (flags & SHGDN_FORPARSING)) {
            new_name.erase(0, new_name.rfind(separator) + 1);
        }
        const auto directory = get_directory();
        if (!directory) {
            return E_FAIL;
        }
        try {
            directory->rename_item(old_name, new_name);
        } catch (const vfs::exception&) {
            ui::show_current_failure(owner);
            return E_FAIL;
        }
        item.last().set_name(new_name);
        if (result) {
            *result = item.to_list().release();
        }
        notify_change(item.last().is_directory() ? SHCNE_RENAMEFOLDER : SHCNE_RENAMEITEM, old_path,
                      m_root + m_path + item);
        return S_OK;
    });
}

} // namespace shell
