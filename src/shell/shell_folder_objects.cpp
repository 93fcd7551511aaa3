/// What a folder hands out: its children, and the objects that views and transfers work with.
#include "shell/extract_icon.h"
#include "shell/extract_image.h"
#include "shell/shell_folder.h"
#include "shell/view_callback.h"
#include "shell_items/id_list_bytes.h"
#include "shell_items/resolve.h"
#include "shell_items/seams.h"
#include "vfs/exceptions.h"
#include "vfs/file.h"

namespace shell {

using com::guard;
using Microsoft::WRL::ComPtr;

namespace {

/// The last record of the one list that there must be. Throws E_INVALIDARG.
PIDLDATA get_only_record(UINT count, PCUITEMID_CHILD_ARRAY lists) {
    const auto record = count == 1 && lists ? read_record(last_entry_of(lists[0])) : std::nullopt;
    if (!record) {
        throw com::status_exception(E_INVALIDARG);
    }
    return *record;
}

} // namespace

HRESULT CShellFolderImpl::open_stream(const vfs::item_ptr& item, REFIID iid, void** result) const {
    if (!std::dynamic_pointer_cast<vfs::file>(item)) {
        return E_NOINTERFACE;
    }
    return get_seams().create_stream(item, iid, result);
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
    return guard([&]() -> HRESULT {
        com::cleared(result);
        if (IsEqualIID(iid, __uuidof(IShellView))) {
            return create_view(iid, result);
        }
        if (IsEqualIID(iid, __uuidof(ITransferDestination))) {
            return QueryInterface(iid, result);
        }
        if (IsEqualIID(iid, __uuidof(IStream))) {
            com::check(ensure_connected(owner, true));
            return open_stream(m_item, iid, result);
        }
        if (IsEqualIID(iid, __uuidof(IExtractImage))) {
            com::check(ensure_connected(owner, true));
            const auto image = com::make<CExtractImageImpl>();
            com::check(image->init(m_item));
            return image->QueryInterface(iid, result);
        }
        return E_NOINTERFACE;
    });
}

HRESULT CShellFolderImpl::create_view(REFIID iid, void** result) {
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

HRESULT CShellFolderImpl::GetUIObjectOf(HWND owner, UINT count, PCUITEMID_CHILD_ARRAY lists,
                                        REFIID iid, UINT*, void** result) {
    return guard([&]() -> HRESULT {
        com::cleared(result);
        if (IsEqualIID(iid, __uuidof(IExtractIconW))) {
            if (count != 1) {
                return E_FAIL;
            }
            return com::make<CExtractIconImpl>(get_only_record(count, lists))
                ->QueryInterface(iid, result);
        }
        if (IsEqualIID(iid, __uuidof(IExtractImage))) {
            const PIDLDATA record = get_only_record(count, lists);
            com::check(ensure_connected(owner, true));
            const auto directory = get_directory();
            if (!directory) {
                return E_NOINTERFACE;
            }
            const auto image = com::make<CExtractImageImpl>();
            com::check(image->init(*directory, record));
            return image->QueryInterface(iid, result);
        }
        return E_NOINTERFACE;
    });
}

HRESULT CShellFolderImpl::CreateStream(const OLECHAR* name, DWORD, DWORD, DWORD, IStream** result) {
    return guard([&] {
        com::cleared(result);
        const auto directory = get_directory();
        if (!directory || !name) {
            return E_FAIL;
        }
        std::wstring text = name;
        directory->create_file(text);
        ITEMIDLIST* list = nullptr;
        if (FAILED(ParseDisplayName(nullptr, nullptr, text.data(), nullptr, &list, nullptr))) {
            return E_FAIL;
        }
        const com::unique_id_list owned(list);
        void* stream = nullptr;
        if (FAILED(BindToObject(list, nullptr, __uuidof(IStream), &stream))) {
            return E_FAIL;
        }
        *result = static_cast<IStream*>(stream);
        return S_OK;
    });
}

} // namespace shell
