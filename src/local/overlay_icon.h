#pragma once

#include "com/class_ids.h"
#include "com/object.h"

#include <oaidl.h>
#include <shlobj.h>

// The platform's header leaves it out.
__CRT_UUID_DECL(IShellIconOverlayIdentifier, 0x0c6c4200, 0xc589, 0x11d0, 0x99, 0x9a, 0x00, 0xc0,
                0x4f, 0xd6, 0x55, 0xe1)

namespace local {

#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wnon-virtual-dtor"

/// The companion interface of the class, as the type library describes it: it has no operations.
struct IShellOverlayIcon : IDispatch {};

#pragma GCC diagnostic pop

} // namespace local

template <>
constexpr const GUID& __mingw_uuidof<local::IShellOverlayIcon>() {
    return com::IID_IShellOverlayIcon;
}

namespace local {

/// The mark on the icons of local files and folders that are bound permanently. The shell makes one
/// and asks it for each item that it paints, on threads of its own; it holds nothing.
class CShellOverlayIcon : public com::object<CShellOverlayIcon, IShellIconOverlayIdentifier,
                                             com::chain<IShellOverlayIcon, IDispatch>> {
public:
    /// S_OK for a bound item, S_FALSE for all others and when that cannot be told. Asks no store.
    HRESULT STDMETHODCALLTYPE IsMemberOf(PCWSTR path, DWORD attributes) noexcept override;
    /// An icon of this module by its place among them. A buffer that is too short is a failure.
    HRESULT STDMETHODCALLTYPE GetOverlayInfo(PWSTR file, int size, int* index,
                                             DWORD* flags) noexcept override;
    /// The highest one.
    HRESULT STDMETHODCALLTYPE GetPriority(int* priority) noexcept override;

    // By the type library.
    HRESULT STDMETHODCALLTYPE GetTypeInfoCount(UINT* count) noexcept override;
    HRESULT STDMETHODCALLTYPE GetTypeInfo(UINT index, LCID locale,
                                          ITypeInfo** result) noexcept override;
    HRESULT STDMETHODCALLTYPE GetIDsOfNames(REFIID reserved, LPOLESTR* names, UINT count,
                                            LCID locale, DISPID* ids) noexcept override;
    HRESULT STDMETHODCALLTYPE Invoke(DISPID id, REFIID reserved, LCID locale, WORD flags,
                                     DISPPARAMS* arguments, VARIANT* result, EXCEPINFO* failure,
                                     UINT* argument) noexcept override;
};

} // namespace local
