#include "local/overlay_icon.h"

#include "com/guard.h"
#include "resources/resource_ids.h"
#include "syncer/bound_items.h"
#include "utils/module.h"
#include "vfs_quilldeck/session/current_user.h"

#include <string>

namespace local {

namespace {

using Microsoft::WRL::ComPtr;

ComPtr<ITypeInfo> load_type_info() {
    ComPtr<ITypeLib> library;
    com::check(::LoadTypeLibEx(utils::own_module_path().c_str(), REGKIND_NONE, &library));
    ComPtr<ITypeInfo> info;
    com::check(library->GetTypeInfoOfGuid(com::IID_IShellOverlayIcon, &info));
    return info;
}

} // namespace

HRESULT CShellOverlayIcon::IsMemberOf(PCWSTR path, DWORD) noexcept {
    try {
        const auto user = vfs_quilldeck::find_current_user_name(utils::own_module());
        return path && user && syncer::is_bound(*user, path) ? S_OK : S_FALSE;
    } catch (...) {
        // Of whatever kind it is: an icon is no place for a failure.
        return S_FALSE;
    }
}

HRESULT CShellOverlayIcon::GetOverlayInfo(PWSTR file, int size, int* index, DWORD* flags) noexcept {
    return com::guard([&] {
        com::required(file);
        com::cleared(index);
        com::cleared(flags);
        const std::wstring path = utils::own_module_path();
        if (size <= 0 || path.size() >= static_cast<std::size_t>(size)) {
            throw com::status_exception(HRESULT_FROM_WIN32(ERROR_INSUFFICIENT_BUFFER));
        }
        file[path.copy(file, path.size())] = L'\0';
        *index = IDI_BOUND_INDEX;
        *flags = ISIOI_ICONFILE | ISIOI_ICONINDEX;
    });
}

HRESULT CShellOverlayIcon::GetPriority(int* priority) noexcept {
    return com::guard([&] { com::cleared(priority); });
}

HRESULT CShellOverlayIcon::GetTypeInfoCount(UINT* count) noexcept {
    return com::guard([&] { com::required(count) = 1; });
}

HRESULT CShellOverlayIcon::GetTypeInfo(UINT index, LCID, ITypeInfo** result) noexcept {
    return com::guard([&] {
        com::cleared(result);
        if (index != 0) {
            throw com::status_exception(DISP_E_BADINDEX);
        }
        *result = load_type_info().Detach();
    });
}

HRESULT CShellOverlayIcon::GetIDsOfNames(REFIID, LPOLESTR* names, UINT count, LCID,
                                         DISPID* ids) noexcept {
    return com::guard([&] { return load_type_info()->GetIDsOfNames(names, count, ids); });
}

HRESULT CShellOverlayIcon::Invoke(DISPID id, REFIID, LCID, WORD flags, DISPPARAMS* arguments,
                                  VARIANT* result, EXCEPINFO* failure, UINT* argument) noexcept {
    return com::guard([&] {
        return load_type_info()->Invoke(static_cast<IShellOverlayIcon*>(this), id, flags, arguments,
                                        result, failure, argument);
    });
}

} // namespace local
