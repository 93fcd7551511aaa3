#include "shell/shell_folder.h"

#include "com/enumerator.h"
#include "shell/item_attributes.h"
#include "shell/item_order.h"
#include "shell_items/file_types.h"
#include "shell_items/host_process.h"
#include "shell_items/seams.h"
#include "ui/message.h"
#include "utils/module.h"
#include "vfs/exceptions.h"
#include "vfs_quilldeck/session/session.h"
#include "vfs_quilldeck/session/session_objects.h"

namespace shell {

using com::guard;

namespace {

using id_enumerator = com::vector_enumerator<IEnumIDList, ITEMIDLIST*, PIDLDATA, CPIDLConstructor>;

/// Notes in the directory's flags that it holds such a file.
void mark_content(vfs::directory& directory, const file_types::entry& type) {
    const std::uint32_t old = directory.get_folder_flags();
    const std::uint32_t flags =
        old | (type.audio ? vfs::folder_has_audio : 0U) | (type.video ? vfs::folder_has_video : 0U);
    if (flags != old) {
        directory.set_folder_flags(flags);
    }
}

} // namespace

CShellFolderImpl::CShellFolderImpl() : m_login_mutex(vfs_quilldeck::login_mutex_name) {}

CShellFolderImpl::CShellFolderImpl(CItemIDList root, CItemIDList path, vfs::item_ptr item)
    : m_root(std::move(root)), m_path(std::move(path)), m_item(std::move(item)),
      m_login_mutex(vfs_quilldeck::login_mutex_name) {}

CShellFolderImpl::~CShellFolderImpl() noexcept try {
} catch (...) {

    // The mutex could not be closed, which is no reason to end the host.
    return;
}

HRESULT CShellFolderImpl::ensure_connected(HWND owner, bool quiet) noexcept {
    try {
        if (!m_client) {
            const HMODULE module = utils::own_module();
            // Whoever asks for the dialog takes the mutex there, and all who ask with him; nobody
            // else waits for a user in front of it.
            if (!vfs_quilldeck::is_logged_in(module) &&
                (quiet || !get_seams().dialogs.sign_in(m_login_mutex, owner))) {
                return E_FAIL;
            }
            m_client = vfs_quilldeck::get_client(module);
        }
        if (!m_item) {
            m_item = m_client->get_root();
        }
        return S_OK;
    } catch (...) {
        ui::show_current_failure(owner);
        return E_FAIL;
    }
}

std::shared_ptr<vfs::directory> CShellFolderImpl::get_directory() const {
    return std::dynamic_pointer_cast<vfs::directory>(m_item);
}

bool CShellFolderImpl::is_deleted() const {
    return m_item && m_item->get_delete_date() != vfs::time_unknown;
}

com::unique_id_list CShellFolderImpl::get_absolute_list() const {
    com::unique_id_list list = (m_root + m_path).to_list();
    if (!list) {
        throw com::status_exception(E_OUTOFMEMORY);
    }
    return list;
}

HRESULT CShellFolderImpl::GetObject(HWND hWnd, VARIANT* ppObject) {
    return guard([&] {
        VARIANT& result = com::required(ppObject);
        com::check(ensure_connected(hWnd, true));
        result.vt = VT_BYREF;
        result.byref = &m_item;
    });
}

HRESULT CShellFolderImpl::GetClassID(CLSID* result) {
    return guard([&] { com::required(result) = com::CLSID_ShellFolderImpl; });
}

HRESULT CShellFolderImpl::Initialize(PCIDLIST_ABSOLUTE list) {
    return guard([&] {
        if (!list) {
            return E_INVALIDARG;
        }
        m_root = CItemIDList(list, true);
        return S_OK;
    });
}

HRESULT CShellFolderImpl::InitializeEx(IBindCtx*, PCIDLIST_ABSOLUTE list,
                                       const PERSIST_FOLDER_TARGET_INFO*) {
    return Initialize(list);
}

HRESULT CShellFolderImpl::GetCurFolder(PIDLIST_ABSOLUTE* result) {
    return guard([&] {
        com::cleared(result);
        if (!m_root.has_head()) {
            return S_FALSE;
        }
        *result = get_absolute_list().release();
        return S_OK;
    });
}

HRESULT CShellFolderImpl::GetFolderTargetInfo(PERSIST_FOLDER_TARGET_INFO*) {
    return E_NOTIMPL;
}

HRESULT CShellFolderImpl::EnumObjects(HWND, SHCONTF flags, IEnumIDList** result) {
    return guard([&] {
        com::cleared(result);
        if (FAILED(ensure_connected(nullptr, false)) || flags == 0) {
            return S_FALSE;
        }
        const auto directory = get_directory();
        if (!directory) {
            return S_FALSE;
        }
        std::vector<vfs::item_ptr> items;
        try {
            items = directory->get_items();
        } catch (const vfs::exception&) {
            ui::show_current_failure(nullptr);
        }
        if (items.empty()) {
            return S_FALSE;
        }
        m_enumerations.push_front(list_items(*directory, items, flags));
        *result =
            com::make<id_enumerator>(m_enumerations.front(), static_cast<IShellFolderImpl*>(this))
                .Detach();
        return S_OK;
    });
}

std::vector<PIDLDATA> CShellFolderImpl::list_items(vfs::directory& directory,
                                                   const std::vector<vfs::item_ptr>& items,
                                                   SHCONTF flags) {
    file_types types;
    std::vector<PIDLDATA> records;
    records.reserve(items.size());
    for (const vfs::item_ptr& item : items) {
        const bool is_directory = item->get_type() == vfs::type_directory;
        if (flags & (is_directory ? SHCONTF_FOLDERS : SHCONTF_NONFOLDERS)) {
            records.emplace_back(item, types);
            if (!is_directory) {
                mark_content(directory, types.of_file(item->get_name()));
            }
        }
    }
    return records;
}

HRESULT CShellFolderImpl::GetAttributesOf(UINT count, PCUITEMID_CHILD_ARRAY lists, SFGAOF* flags) {
    return guard([&] {
        SFGAOF& common = com::required(flags);
        if (count == 0) {
            return S_OK;
        }
        if (!lists) {
            return E_INVALIDARG;
        }
        const bool in_file_manager = is_file_manager();
        for (UINT i = 0; i < count; ++i) {
            common &= get_attributes(lists[i], in_file_manager);
        }
        return S_OK;
    });
}

HRESULT CShellFolderImpl::CompareIDs(LPARAM column, PCUIDLIST_RELATIVE left,
                                     PCUIDLIST_RELATIVE right) {
    return guard([&] { return compare_lists(column, left, right); });
}

} // namespace shell
