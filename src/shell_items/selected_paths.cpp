#include "shell_items/selected_paths.h"

#include "com/media.h"
#include "shell_items/file_list_block.h"

#include <shellapi.h>

namespace shell {

std::vector<std::wstring> selected_paths(IDataObject& data) {
    FORMATETC format{CF_HDROP, nullptr, DVASPECT_CONTENT, -1, TYMED_HGLOBAL};
    com::medium block;
    com::check(data.GetData(&format, block.put()));
    if (block.get().tymed != TYMED_HGLOBAL) {
        throw com::status_exception(DV_E_TYMED);
    }
    const com::global_lock locked(block.get().hGlobal);
    const std::size_t count = count_of_paths(locked.bytes()).value_or(0);
    std::vector<std::wstring> paths;
    for (UINT index = 0; index < count; ++index) {
        auto* const list = static_cast<HDROP>(block.get().hGlobal);
        std::wstring path(::DragQueryFileW(list, index, nullptr, 0), L'\0');
        const auto size = static_cast<UINT>(path.size());
        if (size != 0 && ::DragQueryFileW(list, index, path.data(), size + 1) == size) {
            paths.push_back(std::move(path));
        }
    }
    if (paths.empty()) {
        throw com::status_exception(E_INVALIDARG);
    }
    return paths;
}

} // namespace shell
