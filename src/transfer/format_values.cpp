#include "transfer/format_values.h"

#include "com/media.h"

#include <cstring>

namespace transfer {

namespace {

/// Shared, as the platform's own effects are; the receiver may find it discarded.
constexpr UINT block_flags = GMEM_SHARE | GMEM_DISCARDABLE | GMEM_MOVEABLE;
static_assert(block_flags == 0x2102);

} // namespace

FORMATETC format_of(UINT format, DWORD media, LONG index) noexcept {
    return {static_cast<CLIPFORMAT>(format), nullptr, DVASPECT_CONTENT, index, media};
}

DWORD read_value(IDataObject& source, UINT format) noexcept {
    DWORD value = 0;
    com::guard([&] {
        FORMATETC request = format_of(format);
        com::medium content;
        com::check(source.GetData(&request, content.put()));
        if (content.get().tymed != TYMED_HGLOBAL) {
            return;
        }
        const com::global_lock block(content.get().hGlobal);
        if (block.bytes().size() >= sizeof(value)) {
            std::memcpy(&value, block.bytes().data(), sizeof(value));
        }
    });
    return value;
}

HRESULT write_value(IDataObject& target, UINT format, DWORD value) noexcept {
    return com::guard([&] {
        com::medium content(com::make_global(sizeof(value), block_flags));
        {
            const com::global_lock block(content.get().hGlobal);
            std::memcpy(block.bytes().data(), &value, sizeof(value));
        }
        FORMATETC request = format_of(format);
        STGMEDIUM given = content.get();
        const HRESULT status = target.SetData(&request, &given, TRUE);
        if (SUCCEEDED(status)) {
            content.release();
        }
        return status;
    });
}

} // namespace transfer
