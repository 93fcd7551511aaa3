#pragma once

#include "com/object.h"
#include "shell_items/item_record.h"

#include <shlobj.h>

// The headers declare this interface without its identifier.
__CRT_UUID_DECL(IExtractIconW, 0x000214fa, 0x0000, 0x0000, 0xc0, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00,
                0x46)

namespace shell {

/// The icon of an item: the one that a local item of its kind has. The store is not asked.
class CExtractIconImpl final : public com::object<CExtractIconImpl, IExtractIconW> {
public:
    explicit CExtractIconImpl(const PIDLDATA& record) : m_record(record) {}

    /// Where the platform finds the icon. `result_flags` is only added to.
    HRESULT STDMETHODCALLTYPE GetIconLocation(UINT flags, LPWSTR icon_file, UINT icon_file_size,
                                              int* index, UINT* result_flags) noexcept override;
    /// The icon in the platform's two sizes, for the caller to destroy; a null pointer is skipped.
    /// S_FALSE where the last location was asked for by the shell, which then extracts from it by
    /// itself.
    HRESULT STDMETHODCALLTYPE Extract(LPCWSTR file, UINT index, HICON* large_icon,
                                      HICON* small_icon, UINT size) noexcept override;

private:
    const PIDLDATA m_record;
    bool m_for_shell = false;
    bool m_open = false;
};

} // namespace shell
