#include "shell_items/id_list_array.h"

#include "com/clipboard_formats.h"
#include "shell_items/id_list_bytes.h"

#include <shlobj.h>

#include <cstring>

namespace shell {

namespace {

com::medium request(IDataObject& data) {
    FORMATETC format{static_cast<CLIPFORMAT>(com::registered_formats.shell_id_list_array), nullptr,
                     DVASPECT_CONTENT, -1, TYMED_HGLOBAL};
    com::medium block;
    com::check(data.GetData(&format, block.put()));
    if (block.get().tymed != TYMED_HGLOBAL) {
        throw com::status_exception(DV_E_TYMED);
    }
    return block;
}

} // namespace

id_list_array::id_list_array(IDataObject& data)
    : block_(request(data)), locked_(block_.get().hGlobal) {}

std::size_t id_list_array::count() const noexcept {
    return locked_.bytes().size() < sizeof(std::uint32_t) ? 0 : read(offsetof(CIDA, cidl));
}

com::unique_id_list id_list_array::absolute(std::size_t index) const {
    com::unique_id_list whole(::ILCombine(folder(), item(index)));
    if (!whole) {
        throw com::status_exception(E_OUTOFMEMORY);
    }
    return whole;
}

const ITEMIDLIST* id_list_array::list(std::size_t index) const {
    const auto bytes = locked_.bytes();
    const std::size_t entry = offsetof(CIDA, aoffset) + index * sizeof(std::uint32_t);
    if (index > count() || index > bytes.size() || entry + sizeof(std::uint32_t) > bytes.size()) {
        throw com::status_exception(E_INVALIDARG);
    }
    const std::size_t begin = read(entry);
    if (begin == 0 || begin > bytes.size() || !holds_whole_list(bytes.subspan(begin))) {
        throw com::status_exception(E_INVALIDARG);
    }
    return reinterpret_cast<const ITEMIDLIST*>(bytes.data() + begin);
}

std::uint32_t id_list_array::read(std::size_t offset) const {
    std::uint32_t value = 0;
    std::memcpy(&value, locked_.bytes().data() + offset, sizeof(value));
    return value;
}

} // namespace shell
