#pragma once

#include "com/object.h"
#include "shell_items/item_record.h"
#include "vfs/directory.h"
#include "vfs/file.h"

#include <shlobj.h>

#include <string>

namespace shell {

/// The thumbnail of a file: fetched once, then kept on the disk. The store decides of its size, and
/// the shell scales it. One thread uses it at a time, not always the same one.
class CExtractImageImpl final : public com::object<CExtractImageImpl, IExtractImage> {
public:
    /// Pictures the item that `record` names in `directory`. E_FAIL for what is no file or is not
    /// there.
    HRESULT init(vfs::directory& directory, const PIDLDATA& record) noexcept;
    /// Pictures `item`. E_FAIL for what is no file.
    HRESULT init(const vfs::item_ptr& item) noexcept;

    /// Where the thumbnail will lie. E_PENDING tells the shell to call `Extract` on a thread in the
    /// background, which it wants for IEIFLAG_ASYNC; the path is given all the same.
    HRESULT STDMETHODCALLTYPE GetLocation(LPWSTR path, DWORD path_size, DWORD* priority,
                                          const SIZE* size, DWORD depth, DWORD* flags) override;
    /// Fetches the thumbnail unless a fresh one is there, and gives it to the caller as a bitmap.
    HRESULT STDMETHODCALLTYPE Extract(HBITMAP* bitmap) override;

private:
    vfs::file& get_file() const;

    /// Of the cached thumbnail; empty until `GetLocation`.
    std::wstring m_path;
    vfs::item_ptr m_item;
};

} // namespace shell
