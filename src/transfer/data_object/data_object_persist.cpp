/// How a data object outlives its program.
#include "com/clipboard_formats.h"
#include "com/guard.h"
#include "com/memory.h"
#include "shell_items/bind_folder.h"
#include "shell_items/id_list_bytes.h"
#include "shell_items/shell_folder_interface.h"
#include "transfer/data_object/data_object.h"
#include "transfer/data_object/persisted_selection.h"
#include "transfer/format_values.h"

#include <shlobj.h>

namespace transfer {

using com::guard;
using Microsoft::WRL::ComPtr;

namespace {

persisted_list persist(const shell::CItemIDList& list) {
    const com::unique_id_list flat = list.to_list();
    if (!flat) {
        throw com::status_exception(E_OUTOFMEMORY);
    }
    const auto* const begin = reinterpret_cast<const std::byte*>(flat.get());
    const std::size_t length = shell::entries_of(flat.get()).size() + shell::terminator_size;
    return {list.has_head(), {begin, begin + length}};
}

const ITEMIDLIST* list_of(const std::vector<std::byte>& bytes) noexcept {
    return reinterpret_cast<const ITEMIDLIST*>(bytes.data());
}

/// A window that is there, or the desktop's. Handles have 32 bits that count, in all programs.
HWND window_of(std::uint32_t value) noexcept {
    const auto window = reinterpret_cast<HWND>(static_cast<LONG_PTR>(static_cast<LONG>(value)));
    return ::IsWindow(window) ? window : ::GetDesktopWindow();
}

} // namespace

HRESULT CDataObjectImpl::GetClassID(CLSID* result) {
    return guard([&] { com::required(result) = com::CLSID_DataObjectImpl; });
}

HRESULT CDataObjectImpl::IsDirty() {
    return E_NOTIMPL;
}

HRESULT CDataObjectImpl::GetSizeMax(ULARGE_INTEGER* size) {
    if (size) {
        size->HighPart = 0;
        size->LowPart = static_cast<DWORD>((m_selection.records.size() + 3) * 1000);
    }
    return S_OK;
}

HRESULT CDataObjectImpl::Save(IStream* stream, BOOL) {
    return guard([&] {
        IStream& target = com::required(stream);
        persisted_selection saved;
        saved.owner = static_cast<std::uint32_t>(reinterpret_cast<ULONG_PTR>(m_owner));
        saved.root = persist(m_root);
        saved.folder = persist(m_path);
        for (const shell::PIDLDATA& record : m_selection.records) {
            saved.items.push_back(persist(shell::CItemIDList(record)).bytes);
        }
        saved.preferred_effect = read_value(*this, com::registered_formats.preferred_drop_effect);
        const std::vector<std::byte> bytes = to_bytes(saved);
        ULONG written = 0;
        com::check(target.Write(bytes.data(), static_cast<ULONG>(bytes.size()), &written));
        return written == bytes.size() ? S_OK : E_FAIL;
    });
}

HRESULT CDataObjectImpl::Load(IStream* stream) {
    return guard([&]() -> HRESULT {
        IStream& source = com::required(stream);
        if (m_selection.folder) {
            return E_UNEXPECTED;
        }
        const auto read = read_selection([&](std::span<std::byte> bytes) -> std::size_t {
            ULONG fetched = 0;
            com::check(source.Read(bytes.data(), static_cast<ULONG>(bytes.size()), &fetched));
            return fetched;
        });
        if (!read) {
            return E_FAIL;
        }
        const HWND owner = window_of(read->owner);
        const shell::CItemIDList root(list_of(read->root.bytes), true);
        const shell::CItemIDList path(list_of(read->folder.bytes), false);
        std::vector<PCUITEMID_CHILD> items;
        for (const std::vector<std::byte>& item : read->items) {
            items.push_back(list_of(item));
        }
        const ComPtr<IShellFolder> folder = shell::bind_folder(root, path);
        com::check(Init(shell::get_directory(*folder.Get(), owner), root, path, owner, items));
        return read->preferred_effect == 0
                   ? S_OK
                   : write_value(*this, com::registered_formats.preferred_drop_effect,
                                 read->preferred_effect);
    });
}

} // namespace transfer
