#pragma once

#include "com/media.h"

#include <objidl.h>

#include <deque>
#include <vector>

namespace transfer {

/// The formats of a data object, in the order in which they came, each with what is stored under
/// it. They become more or are replaced, and never fewer.
class CStoredFormats {
public:
    struct entry {
        FORMATETC format;
        com::medium content; ///< empty where the data object makes it on demand
    };

    /// The first entry whose number and index are those of `wanted` and that has one of its media
    /// and aspects; null without one.
    const entry* find(const FORMATETC& wanted) const noexcept;
    /// The same, or a new one at the end, without content.
    entry& get(const FORMATETC& format);
    /// Puts a format at the end.
    void append(const FORMATETC& format, com::medium content);

    std::vector<FORMATETC> formats() const;

private:
    std::deque<entry> m_entries;
};

/// A medium of its own with the same content, which is `source`'s; `format` tells what a handle
/// means. Throws DV_E_TYMED for what cannot be copied, or the failure.
com::medium duplicate_medium(const STGMEDIUM& source, CLIPFORMAT format);

/// Gives the content of `stored` to a caller without copying it: handles stay the owner's, whom the
/// medium therefore keeps alive. Throws DV_E_TYMED for a medium of no known kind.
STGMEDIUM share_medium(const STGMEDIUM& stored, IUnknown& owner);

} // namespace transfer
