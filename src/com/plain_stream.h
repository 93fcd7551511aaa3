#pragma once

#include <objidl.h>

namespace com {

/// Completes `Object`, an `object` with an `IStream`, by the operations that no stream of bytes
/// which only come or go can offer: they answer E_NOTIMPL.
template <class Object>
class plain_stream : public Object {
public:
    HRESULT STDMETHODCALLTYPE SetSize(ULARGE_INTEGER) override { return E_NOTIMPL; }

    HRESULT STDMETHODCALLTYPE Commit(DWORD) override { return E_NOTIMPL; }

    HRESULT STDMETHODCALLTYPE Revert() override { return E_NOTIMPL; }

    HRESULT STDMETHODCALLTYPE LockRegion(ULARGE_INTEGER, ULARGE_INTEGER, DWORD) override {
        return E_NOTIMPL;
    }

    HRESULT STDMETHODCALLTYPE UnlockRegion(ULARGE_INTEGER, ULARGE_INTEGER, DWORD) override {
        return E_NOTIMPL;
    }

    HRESULT STDMETHODCALLTYPE Clone(IStream**) override { return E_NOTIMPL; }
};

} // namespace com
