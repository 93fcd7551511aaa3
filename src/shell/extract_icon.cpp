#include "shell/extract_icon.h"

#include "com/guard.h"
#include "shell_items/file_types.h"
#include "utils/unique_handle.h"

#include <shellapi.h>

#include <string>

namespace shell {

namespace {

struct icon_traits {
    using pointer = HICON;

    static pointer none() noexcept { return nullptr; }

    static void close(pointer value) noexcept { ::DestroyIcon(value); }
};

using unique_icon = utils::unique_resource<icon_traits>;

/// What the platform knows of items like this one. Throws E_FAIL.
SHFILEINFOW ask_platform(const PIDLDATA& record, bool open, UINT what) {
    const bool directory = record.is_directory();
    const std::wstring path = directory ? L"*" : std::wstring(extension_of(record.get_name()));
    SHFILEINFOW info{};
    if (!::SHGetFileInfoW(
            path.c_str(), directory ? FILE_ATTRIBUTE_DIRECTORY : FILE_ATTRIBUTE_NORMAL, &info,
            sizeof(info), what | SHGFI_USEFILEATTRIBUTES | (open ? UINT{SHGFI_OPENICON} : 0))) {
        throw com::status_exception(E_FAIL);
    }
    return info;
}

} // namespace

HRESULT CExtractIconImpl::GetIconLocation(UINT flags, LPWSTR icon_file, UINT icon_file_size,
                                          int* index, UINT* result_flags) noexcept {
    return com::guard([&] {
        com::required(icon_file);
        com::required(result_flags);
        com::cleared(index);
        m_for_shell = (flags & GIL_FORSHELL) != 0;
        m_open = (flags & GIL_OPENICON) != 0;
        const SHFILEINFOW info = ask_platform(m_record, m_open, SHGFI_ICONLOCATION);
        *index = info.iIcon;
        std::wstring name = info.szDisplayName;
        if (name.empty()) {
            name = L"*";
            *result_flags |= GIL_NOTFILENAME;
        }
        if (icon_file_size > 0) {
            icon_file[name.copy(icon_file, icon_file_size - 1)] = L'\0';
        }
    });
}

HRESULT CExtractIconImpl::Extract(LPCWSTR, UINT, HICON* large_icon, HICON* small_icon,
                                  UINT) noexcept {
    return com::guard([&] {
        // A caller leaves out the size that he does not want.
        HICON left_out = nullptr;
        HICON& large = com::cleared(large_icon ? large_icon : &left_out);
        HICON& small = com::cleared(small_icon ? small_icon : &left_out);
        if (m_for_shell) {
            return S_FALSE;
        }
        unique_icon found;
        if (large_icon) {
            found.reset(ask_platform(m_record, m_open, SHGFI_ICON).hIcon);
        }
        if (small_icon) {
            small = ask_platform(m_record, m_open, SHGFI_ICON | SHGFI_SMALLICON).hIcon;
        }
        large = found.release();
        return S_OK;
    });
}

} // namespace shell
