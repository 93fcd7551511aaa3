#include "transfer/drop_source.h"

#include "com/class_factory.h"

namespace transfer {

HRESULT CDropSourceImpl::QueryContinueDrag(BOOL escape, DWORD keys) {
    if (escape) {
        return DRAGDROP_S_CANCEL;
    }
    return (keys & MK_LBUTTON) != 0 ? S_OK : DRAGDROP_S_DROP;
}

HRESULT create_drop_source(REFIID iid, void** result) noexcept {
    return com::create<CDropSourceImpl>(iid, result);
}

} // namespace transfer
