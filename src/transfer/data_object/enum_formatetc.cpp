#include "transfer/data_object/enum_formatetc.h"

#include "com/guard.h"

#include <algorithm>

namespace transfer {

HRESULT CEnumFORMATETC::Next(ULONG count, FORMATETC* formats, ULONG* fetched) {
    if (fetched) {
        *fetched = 0;
    }
    if (!formats || (!fetched && count != 1)) {
        return E_POINTER;
    }
    const auto given = static_cast<ULONG>(std::min<std::size_t>(count, left()));
    std::copy_n(m_formats.data() + m_position, given, formats);
    m_position += given;
    if (fetched) {
        *fetched = given;
    }
    return given == count ? S_OK : S_FALSE;
}

HRESULT CEnumFORMATETC::Skip(ULONG count) {
    const bool enough = count <= left();
    m_position += enough ? count : left();
    return enough ? S_OK : S_FALSE;
}

HRESULT CEnumFORMATETC::Reset() {
    m_position = 0;
    return S_OK;
}

HRESULT CEnumFORMATETC::Clone(IEnumFORMATETC** result) {
    return com::guard([&] {
        com::cleared(result);
        return E_NOTIMPL;
    });
}

} // namespace transfer
