#include "shell/extract_image.h"

#include "com/guard.h"
#include "shell/picture.h"
#include "shell/thumbnail_cache.h"

#include <memory>

namespace shell {

HRESULT CExtractImageImpl::init(vfs::directory& directory, const PIDLDATA& record) noexcept {
    return com::guard([&] { return init(directory.find_item_by_id(record.get_id(), false)); });
}

HRESULT CExtractImageImpl::init(const vfs::item_ptr& item) noexcept {
    if (!std::dynamic_pointer_cast<vfs::file>(item)) {
        return E_FAIL;
    }
    m_item = item;
    return S_OK;
}

vfs::file& CExtractImageImpl::get_file() const {
    auto* const file = dynamic_cast<vfs::file*>(m_item.get());
    if (!file) {
        throw std::wstring(L"Item is not a file");
    }
    return *file;
}

HRESULT CExtractImageImpl::GetLocation(LPWSTR path, DWORD path_size, DWORD* priority, const SIZE*,
                                       DWORD, DWORD* flags) {
    return com::guard([&] {
        com::required(path);
        if (priority) {
            *priority = IEIT_PRIORITY_NORMAL;
        }
        m_path = get_thumbnail_path(get_file().get_id());
        if (m_path.size() >= path_size) {
            throw std::wstring(L"Thumbnail file name is too long");
        }
        path[m_path.copy(path, m_path.size())] = L'\0';
        return flags && (*flags & IEIFLAG_ASYNC) != 0 ? E_PENDING : S_OK;
    });
}

HRESULT CExtractImageImpl::Extract(HBITMAP* bitmap) {
    return com::guard([&] {
        com::cleared(bitmap);
        vfs::file& file = get_file();
        if (m_path.empty()) {
            return E_FAIL;
        }
        if (!is_thumbnail_fresh(m_path, file.get_modification_date())) {
            store_thumbnail(m_path, file.get_thumbnail());
        }
        *bitmap = load_picture(m_path).release();
        return S_OK;
    });
}

} // namespace shell
