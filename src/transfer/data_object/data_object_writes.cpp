/// What consumers write into a data object, and what that sets going.
#include "com/clipboard_formats.h"
#include "com/guard.h"
#include "shell_items/change_notice.h"
#include "transfer/data_object/data_object.h"
#include "transfer/delete_worker.h"
#include "transfer/format_values.h"

#include <ole2.h>
#include <shlguid.h>

#include <cstring>

namespace transfer {

using com::registered_formats;

namespace {

constexpr CLSID recycle_bin = {
    0x645ff040, 0x5081, 0x101b, {0x9f, 0x08, 0x00, 0xaa, 0x00, 0x2f, 0x95, 0x4e}};

/// Whether the block holds the class of the Recycle Bin. Throws E_OUTOFMEMORY.
bool names_recycle_bin(const STGMEDIUM& medium) {
    const com::global_lock block(medium.tymed == TYMED_HGLOBAL ? medium.hGlobal : nullptr);
    return block.bytes().size() >= sizeof(CLSID) &&
           std::memcmp(block.bytes().data(), &recycle_bin, sizeof(CLSID)) == 0;
}

} // namespace

HRESULT CDataObjectImpl::SetData(FORMATETC* format, STGMEDIUM* medium, BOOL release) {
    return com::guard([&]() -> HRESULT {
        const FORMATETC& request = com::required(format);
        const STGMEDIUM& given = com::required(medium);
        if (request.ptd) {
            return DV_E_DVTARGETDEVICE;
        }
        if ((request.tymed & given.tymed) == 0) {
            return DV_E_TYMED;
        }
        // A failure leaves the medium with the caller, so everything that can fail comes first.
        const bool is_for_recycle_bin =
            request.cfFormat == registered_formats.target_class_id && names_recycle_bin(given);
        take(request, given, release != FALSE);
        answer_write(request, is_for_recycle_bin);
        return S_OK;
    });
}

void CDataObjectImpl::take(const FORMATETC& format, const STGMEDIUM& medium, bool given) {
    // With ourselves as its owner it would keep us alive for ever.
    const bool is_ours = given && is_self(medium.pUnkForRelease);
    com::medium copy;
    if (!given || is_ours) {
        copy = duplicate_medium(medium, format.cfFormat);
    }
    CStoredFormats::entry& entry = m_formats.get(format);
    entry.format = format;
    entry.format.tymed = medium.tymed;
    entry.content = copy ? std::move(copy) : com::medium(medium);
    if (is_ours) {
        com::medium(medium).reset();
    }
}

bool CDataObjectImpl::is_self(IUnknown* other) {
    Microsoft::WRL::ComPtr<IUnknown> theirs;
    Microsoft::WRL::ComPtr<IUnknown> ours;
    return other && SUCCEEDED(other->QueryInterface(IID_PPV_ARGS(&theirs))) &&
           SUCCEEDED(QueryInterface(IID_PPV_ARGS(&ours))) && theirs.Get() == ours.Get();
}

void CDataObjectImpl::answer_write(const FORMATETC& format, bool is_for_recycle_bin) {
    if (format.cfFormat == registered_formats.paste_succeeded) {
        if (must_source_go()) {
            delete_items(true);
            ::OleSetClipboard(nullptr);
        }
        notify();
    } else if (format.cfFormat == registered_formats.performed_drop_effect) {
        notify();
    } else if (is_for_recycle_bin) {
        delete_items(false);
        notify();
    }
}

bool CDataObjectImpl::must_source_go() {
    const auto value = [this](UINT format) {
        return read_value(*this, format);
    };
    return (value(registered_formats.paste_succeeded) == DROPEFFECT_MOVE &&
            value(registered_formats.performed_drop_effect) == DROPEFFECT_MOVE) ||
           value(registered_formats.logical_performed_drop_effect) == DROPEFFECT_MOVE;
}

void CDataObjectImpl::delete_items(bool force) const {
    delete_selection(m_selection, m_owner, force);
}

void CDataObjectImpl::notify() const {
    shell::notify_change(SHCNE_UPDATEDIR, m_selection.list);
}

} // namespace transfer
