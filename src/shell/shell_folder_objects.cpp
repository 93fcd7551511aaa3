/// What a folder hands out: its children, and the objects that views and transfers work with.
#include "shell/extract_icon.h"
#include "shell/extract_image.h"
#include "shell/shell_folder.h"
#include "shell/view_callback.h"
#include "shell_items/id_list_bytes.h"
#include "shell_items/local_name.h"
#include "shell_items/resolve.h"
#include "shell_items/seams.h"
#include "vfs/exceptions.h"
#include "vfs/file.h"

namespace shell {

using com::guard;
using Microsoft::WRL::ComPtr;

namespace {

/// The last record of the one list that there must be. Throws E_INVALIDARG.
PIDLDATA get_only_record(std::span<const PCUITEMID_CHILD> items) {
    const auto record =
        items.size() == 1 ? read_record(last_entry_of(items.front())) : std::nullopt;
    if (!record) {
        throw com::status_exception(E_INVALIDARG);
    }
    return *record;
}

/// Takes back what was just made, where the store still lets us.
void remove_quietly(vfs::directory& directory, const vfs::item_ptr& item) noexcept {
    try {
        directory.delete_item(item, false);
    } catch (...) {
        // An empty file stays behind.
    }
}

} // namespace

HRESULT CShellFolderImpl::open_stream(const vfs::item_ptr& item, REFIID iid, void** result) const {
    if (!std::dynamic_pointer_cast<vfs::file>(item)) {
        return E_NOINTERFACE;
    }
    return get_seams().transfer.create_stream(item, iid, result);
}

HRESULT CShellFolderImpl::BindToObject(PCUIDLIST_RELATIVE list, IBindCtx*, REFIID iid,
                                       void** result) {
    return guard([&]() -> HRESULT {
        com::cleared(result);
        if (!list) {
            return E_INVALIDARG;
        }
        const CItemIDList way(list, false);
        if (is_deleted()) {
            return E_NOINTERFACE;
        }
        com::check(ensure_connected(nullptr, true));
        if (IsEqualIID(iid, __uuidof(IStream))) {
            const auto directory = get_directory();
            if (!directory || way.count() == 0) {
                return E_NOINTERFACE;
            }
            try {
                return open_stream(directory->find_item_by_id(way.last().get_id(), false), iid,
                                   result);
            } catch (const vfs::exception&) {
                return E_NOINTERFACE;
            }
        }
        const auto child =
            com::make<CShellFolderImpl>(m_root, m_path + way, resolve(m_item, way.records()));
        return child->QueryInterface(iid, result);
    });
}

HRESULT CShellFolderImpl::BindToStorage(PCUIDLIST_RELATIVE, IBindCtx*, REFIID, void** result) {
    return guard([&] {
        com::cleared(result);
        return E_NOTIMPL;
    });
}

HRESULT CShellFolderImpl::CreateViewObject(HWND owner, REFIID iid, void** result) {
    static const struct {
        const IID& iid;
        HRESULT (CShellFolderImpl::*create)(HWND owner, REFIID iid, void** result);
    } rows[] = {
        {__uuidof(IShellView), &CShellFolderImpl::create_view},
        {__uuidof(ITransferDestination), &CShellFolderImpl::create_destination},
        {__uuidof(IStream), &CShellFolderImpl::create_own_stream},
        {__uuidof(IExtractImage), &CShellFolderImpl::create_own_image},
        {__uuidof(IDropTarget), &CShellFolderImpl::create_drop_target},
        {__uuidof(IContextMenu), &CShellFolderImpl::create_background_menu},
        {__uuidof(IExplorerCommandProvider), &CShellFolderImpl::create_command_provider},
    };

    return guard([&]() -> HRESULT {
        com::cleared(result);
        for (const auto& row : rows) {
            if (IsEqualIID(iid, row.iid)) {
                return (this->*row.create)(owner, iid, result);
            }
        }
        return E_NOINTERFACE;
    });
}

HRESULT CShellFolderImpl::create_view(HWND, REFIID iid, void** result) {
    if (is_deleted()) {
        return E_NOINTERFACE;
    }
    const auto callback = com::make<CShellFolderViewCBImpl>(get_absolute_list());
    SFV_CREATE request{};
    request.cbSize = sizeof(request);
    request.pshf = this;
    request.psfvcb = callback.Get();
    ComPtr<IShellView> view;
    com::check(SHCreateShellFolderView(&request, &view));
    return view->QueryInterface(iid, result);
}

HRESULT CShellFolderImpl::create_destination(HWND, REFIID iid, void** result) {
    return QueryInterface(iid, result);
}

HRESULT CShellFolderImpl::create_own_stream(HWND owner, REFIID iid, void** result) {
    com::check(ensure_connected(owner, true));
    return open_stream(m_item, iid, result);
}

HRESULT CShellFolderImpl::create_own_image(HWND owner, REFIID iid, void** result) {
    com::check(ensure_connected(owner, true));
    const auto image = com::make<CExtractImageImpl>();
    com::check(image->init(m_item));
    return image->QueryInterface(iid, result);
}

HRESULT CShellFolderImpl::create_drop_target(HWND owner, REFIID iid, void** result) {
    return get_seams().transfer.create_drop_target(static_cast<IShellFolderImpl&>(*this), m_root,
                                                   m_path, owner, iid, result);
}

HRESULT CShellFolderImpl::create_background_menu(HWND owner, REFIID iid, void** result) {
    com::check(ensure_connected(owner, true));
    return get_seams().commands.create_background_menu(*this, m_item, m_root, m_path, iid, result);
}

HRESULT CShellFolderImpl::create_command_provider(HWND owner, REFIID iid, void** result) {
    com::check(ensure_connected(owner, true));
    return get_seams().commands.create_command_provider(*this, iid, result);
}

HRESULT CShellFolderImpl::GetUIObjectOf(HWND owner, UINT count, PCUITEMID_CHILD_ARRAY lists,
                                        REFIID iid, UINT*, void** result) {
    static const struct {
        const IID& iid;
        HRESULT (CShellFolderImpl::*create)(HWND owner, item_lists items, REFIID iid,
                                            void** result);
    } rows[] = {
        {__uuidof(IExtractIconW), &CShellFolderImpl::create_icon},
        {__uuidof(IExtractImage), &CShellFolderImpl::create_image},
        {__uuidof(IDataObject), &CShellFolderImpl::create_data_object},
        {__uuidof(IDropSource), &CShellFolderImpl::create_drop_source},
        {__uuidof(IDropTarget), &CShellFolderImpl::create_item_drop_target},
        {__uuidof(IContextMenu), &CShellFolderImpl::create_item_menu},
    };

    return guard([&]() -> HRESULT {
        com::cleared(result);
        const item_lists items(lists, lists ? count : 0);
        for (const auto& row : rows) {
            if (IsEqualIID(iid, row.iid)) {
                return (this->*row.create)(owner, items, iid, result);
            }
        }
        return E_NOINTERFACE;
    });
}

HRESULT CShellFolderImpl::create_icon(HWND, item_lists items, REFIID iid, void** result) {
    if (items.size() != 1) {
        return E_FAIL;
    }
    return com::make<CExtractIconImpl>(get_only_record(items))->QueryInterface(iid, result);
}

HRESULT CShellFolderImpl::create_image(HWND owner, item_lists items, REFIID iid, void** result) {
    const PIDLDATA record = get_only_record(items);
    com::check(ensure_connected(owner, true));
    const auto directory = get_directory();
    if (!directory) {
        return E_NOINTERFACE;
    }
    const auto image = com::make<CExtractImageImpl>();
    com::check(image->init(*directory, record));
    return image->QueryInterface(iid, result);
}

HRESULT CShellFolderImpl::create_data_object(HWND owner, item_lists items, REFIID iid,
                                             void** result) {
    com::check(ensure_connected(owner, true));
    const auto directory = get_directory();
    if (!directory) {
        return E_FAIL;
    }
    return get_seams().transfer.create_data_object(directory, m_root, m_path, owner, items, iid,
                                                   result);
}

HRESULT CShellFolderImpl::create_drop_source(HWND, item_lists, REFIID iid, void** result) {
    return get_seams().transfer.create_drop_source(iid, result);
}

HRESULT CShellFolderImpl::create_item_drop_target(HWND owner, item_lists items, REFIID iid,
                                                  void** result) {
    if (items.size() != 1) {
        return E_INVALIDARG;
    }
    ComPtr<IShellFolder> folder;
    com::check(BindToObject(items.front(), nullptr, IID_PPV_ARGS(&folder)));
    return folder->CreateViewObject(owner, iid, result);
}

HRESULT CShellFolderImpl::create_item_menu(HWND owner, item_lists items, REFIID iid,
                                           void** result) {
    com::check(ensure_connected(owner, true));
    return get_seams().commands.create_item_menu(owner, *this, m_root + m_path, items, iid, result);
}

HRESULT CShellFolderImpl::CreateStream(const OLECHAR* name, DWORD, DWORD, DWORD, IStream** result) {
    return guard([&] {
        com::cleared(result);
        const auto directory = get_directory();
        if (!directory || !name) {
            return E_FAIL;
        }
        const vfs::item_ptr made = directory->create_file(local_name(name));
        try {
            void* stream = nullptr;
            com::check(open_stream(directory->find_item_by_id(made->get_id(), false),
                                   __uuidof(IStream), &stream));
            *result = static_cast<IStream*>(stream);
            return S_OK;
        } catch (...) {
            remove_quietly(*directory, made);
            return E_FAIL;
        }
    });
}

} // namespace shell
