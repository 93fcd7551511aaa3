#pragma once

#include "com/object.h"

#include <objidl.h>

#include <cstddef>
#include <vector>

namespace transfer {

/// Delivers formats, which name no target device, in their order. It stands on a copy of its own.
class CEnumFORMATETC final : public com::object<CEnumFORMATETC, IEnumFORMATETC> {
public:
    explicit CEnumFORMATETC(std::vector<FORMATETC> formats) noexcept
        : m_formats(std::move(formats)) {}

    HRESULT STDMETHODCALLTYPE Next(ULONG count, FORMATETC* formats, ULONG* fetched) override;
    HRESULT STDMETHODCALLTYPE Skip(ULONG count) override;
    HRESULT STDMETHODCALLTYPE Reset() override;
    HRESULT STDMETHODCALLTYPE Clone(IEnumFORMATETC** result) override;

private:
    std::size_t left() const noexcept { return m_formats.size() - m_position; }

    std::vector<FORMATETC> m_formats;
    std::size_t m_position = 0;
};

} // namespace transfer
