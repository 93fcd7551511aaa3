#include "transfer/data_object/data_object.h"

#include "com/clipboard_formats.h"
#include "com/guard.h"
#include "shell_items/id_list_bytes.h"
#include "transfer/data_object/enum_formatetc.h"
#include "transfer/data_object/id_list_array.h"
#include "transfer/format_values.h"
#include "transfer/stream.h"

#include <cstring>
#include <utility>

namespace transfer {

using com::guard;
using com::registered_formats;

namespace {

/// Readers find them as they are, or not at all; none of them lives in one process only.
constexpr UINT block_flags = GMEM_SHARE | GMEM_MOVEABLE | GMEM_ZEROINIT | GMEM_DISCARDABLE;
static_assert(block_flags == 0x2142);

com::medium make_value(DWORD value) {
    com::medium made(com::make_global(sizeof(value), block_flags));
    const com::global_lock block(made.get().hGlobal);
    std::memcpy(block.bytes().data(), &value, sizeof(value));
    return made;
}

com::unique_id_list copy_of(const shell::CItemIDList& list) {
    com::unique_id_list copy = list.to_list();
    if (!copy) {
        throw com::status_exception(E_OUTOFMEMORY);
    }
    return copy;
}

std::vector<shell::PIDLDATA> records_of(std::span<const PCUITEMID_CHILD> items) {
    std::vector<shell::PIDLDATA> records;
    records.reserve(items.size());
    for (const auto* const item : items) {
        const auto record = shell::read_record(shell::entries_of(item));
        if (!record) {
            throw com::status_exception(E_INVALIDARG);
        }
        records.push_back(*record);
    }
    return records;
}

} // namespace

HRESULT CDataObjectImpl::Init(const std::shared_ptr<vfs::directory>& folder,
                              const shell::CItemIDList& root, const shell::CItemIDList& path,
                              HWND owner, std::span<const PCUITEMID_CHILD> items) noexcept {
    return guard([&] { return init(folder, root, path, owner, records_of(items)); });
}

HRESULT CDataObjectImpl::init(const std::shared_ptr<vfs::directory>& folder,
                              const shell::CItemIDList& root, const shell::CItemIDList& path,
                              HWND owner, std::vector<shell::PIDLDATA> records) {
    if (!folder || records.empty()) {
        return E_INVALIDARG;
    }
    CStoredFormats formats;
    const auto& known = registered_formats;
    formats.append(format_of(known.ole_clipboard_persist_on_flush), make_value(0));
    formats.append(format_of(known.file_group_descriptor), {});
    formats.append(format_of(known.file_contents, TYMED_ISTREAM), {});
    formats.append(format_of(known.shell_id_list_array), {});
    formats.append(format_of(known.quilldeck_data_object), {});
    shell::CItemIDList own_root = root;
    shell::CItemIDList own_path = path;
    selection selected{folder, root + path, std::move(records)};
    // Nothing fails from here on.
    m_owner = owner;
    m_root = std::move(own_root);
    m_path = std::move(own_path);
    m_selection = std::move(selected);
    m_formats = std::move(formats);
    return S_OK;
}

HRESULT CDataObjectImpl::GetPath(PIDLIST_ABSOLUTE* pidlRoot, PIDLIST_RELATIVE* pidl) {
    return guard([&] {
        com::cleared(pidlRoot);
        com::cleared(pidl);
        com::unique_id_list root = copy_of(m_root);
        *pidl = copy_of(m_path).release();
        *pidlRoot = root.release();
    });
}

std::span<const CDataObjectImpl::format_row> CDataObjectImpl::format_rows() {
    static const format_row rows[] = {
        {registered_formats.quilldeck_data_object, TYMED_HGLOBAL, &CDataObjectImpl::make_mark},
        {registered_formats.file_group_descriptor, TYMED_HGLOBAL,
         &CDataObjectImpl::make_descriptors},
        {registered_formats.file_contents, TYMED_ISTREAM, &CDataObjectImpl::make_contents},
        {registered_formats.shell_id_list_array, TYMED_HGLOBAL, &CDataObjectImpl::make_lists},
    };
    return rows;
}

HRESULT CDataObjectImpl::GetData(FORMATETC* format, STGMEDIUM* medium) {
    return guard(E_UNEXPECTED, [&]() -> HRESULT {
        STGMEDIUM& result = com::cleared(medium);
        const FORMATETC request = com::required(format);
        for (const format_row& row : format_rows()) {
            if (row.format == request.cfFormat) {
                if ((request.tymed & row.kind) == 0) {
                    return DV_E_TYMED;
                }
                result = (this->*row.make)(request);
                return S_OK;
            }
        }
        const CStoredFormats::entry* const found = m_formats.find(request);
        if (!found) {
            return DV_E_FORMATETC;
        }
        result = share_medium(found->content.get(), static_cast<IDataObject&>(*this));
        return S_OK;
    });
}

STGMEDIUM CDataObjectImpl::make_mark(const FORMATETC&) {
    return make_value(1).release();
}

void CDataObjectImpl::build_descriptors() {
    if (!m_selection.folder) {
        throw com::status_exception(E_UNEXPECTED);
    }
    m_descriptors.build(*m_selection.folder, m_selection.records);
}

STGMEDIUM CDataObjectImpl::make_descriptors(const FORMATETC&) {
    build_descriptors();
    const auto records = std::as_bytes(std::span(m_descriptors.records()));
    const auto count = static_cast<UINT>(m_descriptors.records().size());
    com::medium made(com::make_global(sizeof(count) + records.size(), block_flags));
    const com::global_lock block(made.get().hGlobal);
    std::memcpy(block.bytes().data(), &count, sizeof(count));
    std::memcpy(block.bytes().data() + sizeof(count), records.data(), records.size());
    return made.release();
}

STGMEDIUM CDataObjectImpl::make_contents(const FORMATETC& request) {
    build_descriptors();
    if (request.lindex < 0 ||
        std::cmp_greater_equal(request.lindex, m_descriptors.records().size())) {
        throw com::status_exception(DV_E_LINDEX);
    }
    STGMEDIUM made{};
    com::check(create_stream(
        m_descriptors.find_file(m_selection.folder, static_cast<std::size_t>(request.lindex)),
        IID_PPV_ARGS(&made.pstm)));
    made.tymed = TYMED_ISTREAM;
    return made;
}

STGMEDIUM CDataObjectImpl::make_lists(const FORMATETC&) {
    return com::medium(make_id_list_array(m_selection.list, m_selection.records, block_flags))
        .release();
}

HRESULT CDataObjectImpl::GetDataHere(FORMATETC*, STGMEDIUM*) {
    return E_NOTIMPL;
}

HRESULT CDataObjectImpl::QueryGetData(FORMATETC* format) {
    return guard([&] {
        const FORMATETC& request = com::required(format);
        return request.cfFormat != registered_formats.shell_id_list_array && m_formats.find(request)
                   ? S_OK
                   : DV_E_FORMATETC;
    });
}

HRESULT CDataObjectImpl::GetCanonicalFormatEtc(FORMATETC* format, FORMATETC* result) {
    return guard([&] {
        com::required(result) = com::required(format);
        return DATA_S_SAMEFORMATETC;
    });
}

HRESULT CDataObjectImpl::EnumFormatEtc(DWORD direction, IEnumFORMATETC** result) {
    return guard([&] {
        com::cleared(result);
        if (direction != DATADIR_GET) {
            return E_NOTIMPL;
        }
        *result = com::make<CEnumFORMATETC>(m_formats.formats()).Detach();
        return S_OK;
    });
}

HRESULT CDataObjectImpl::DAdvise(FORMATETC*, DWORD, IAdviseSink*, DWORD*) {
    return E_NOTIMPL;
}

HRESULT CDataObjectImpl::DUnadvise(DWORD) {
    return E_NOTIMPL;
}

HRESULT CDataObjectImpl::EnumDAdvise(IEnumSTATDATA** result) {
    return guard([&] {
        com::cleared(result);
        return OLE_E_ADVISENOTSUPPORTED;
    });
}

HRESULT create_data_object(const vfs::item_ptr& directory, const shell::CItemIDList& root,
                           const shell::CItemIDList& path, HWND owner,
                           std::span<const PCUITEMID_CHILD> items, REFIID iid,
                           void** result) noexcept {
    return guard([&]() -> HRESULT {
        com::cleared(result);
        const auto folder = std::dynamic_pointer_cast<vfs::directory>(directory);
        if (!folder) {
            return E_FAIL;
        }
        const auto made = com::make<CDataObjectImpl>();
        com::check(made->Init(folder, root, path, owner, items));
        return made->QueryInterface(iid, result);
    });
}

} // namespace transfer
