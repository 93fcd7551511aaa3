#pragma once

#include "com/object.h"

#include <oleidl.h>

namespace transfer {

/// The source's side of a drag: it goes on while the left button is down.
class CDropSourceImpl final : public com::object<CDropSourceImpl, IDropSource> {
public:
    HRESULT STDMETHODCALLTYPE QueryContinueDrag(BOOL escape, DWORD keys) override;

    HRESULT STDMETHODCALLTYPE GiveFeedback(DWORD) override { return DRAGDROP_S_USEDEFAULTCURSORS; }
};

/// One of it, queried for `iid`.
HRESULT create_drop_source(REFIID iid, void** result) noexcept;

} // namespace transfer
