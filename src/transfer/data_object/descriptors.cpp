#include "transfer/data_object/descriptors.h"

#include "com/guard.h"

#include <algorithm>
#include <cstdint>

namespace transfer {

namespace {

// The format is the platform's, and is kept by clipboards that outlive this program.
static_assert(sizeof(FILEDESCRIPTORW) == 592);
static_assert(offsetof(FILEDESCRIPTORW, dwFileAttributes) == 36);
static_assert(offsetof(FILEDESCRIPTORW, nFileSizeHigh) == 64);
static_assert(offsetof(FILEDESCRIPTORW, cFileName) == 72);

constexpr DWORD common_flags = FD_ATTRIBUTES | FD_PROGRESSUI;
static_assert(common_flags == 0x4004);

/// Far deeper than a path can tell. A store that nests a folder in itself ends here.
constexpr int deepest = 256;

[[noreturn]] void fail() {
    throw com::status_exception(E_UNEXPECTED);
}

/// Names come from the store, and paths made of them go to programs that write files there.
bool can_be_part_of_path(const std::wstring& name) noexcept {
    return !name.empty() && name != L"." && name != L".." &&
           name.find_first_of(std::wstring_view(L"\\/:\0", 4)) == std::wstring::npos;
}

} // namespace

void CDescriptors::build(vfs::directory& folder, std::span<const shell::PIDLDATA> selected) {
    if (m_records.empty()) {
        m_status = com::guard(E_UNEXPECTED, [&] { append_all(folder, selected); });
    }
    com::check(m_status);
}

void CDescriptors::append_all(vfs::directory& folder, std::span<const shell::PIDLDATA> selected) {
    for (const shell::PIDLDATA& record : selected) {
        const vfs::item_ptr item = folder.find_item_by_id(record.get_id(), false);
        append(item, L"");
        if (record.is_directory()) {
            append_children(item, L"", 1);
        }
    }
}

void CDescriptors::append(const vfs::item_ptr& item, const std::wstring& prefix) {
    FILEDESCRIPTORW record{};
    record.dwFlags = common_flags;
    if (item->get_type() == vfs::type_directory) {
        record.dwFileAttributes = FILE_ATTRIBUTE_DIRECTORY;
    } else {
        const auto file = std::dynamic_pointer_cast<vfs::file>(item);
        if (!file) {
            fail();
        }
        const auto size = static_cast<std::uint64_t>(file->get_size());
        record.dwFlags |= FD_FILESIZE;
        record.dwFileAttributes = FILE_ATTRIBUTE_NORMAL;
        record.nFileSizeHigh = static_cast<DWORD>(size >> 32U);
        record.nFileSizeLow = static_cast<DWORD>(size);
    }
    const std::wstring name = item->get_name();
    if (!can_be_part_of_path(name)) {
        fail();
    }
    const std::wstring path = prefix + name;
    const std::size_t length = path.copy(record.cFileName, std::size(record.cFileName) - 1);
    if (length < path.size()) {
        m_cut.push_back(m_records.size());
    }
    m_records.push_back(record);
}

void CDescriptors::append_children(const vfs::item_ptr& item, const std::wstring& prefix,
                                   int depth) {
    const auto directory = std::dynamic_pointer_cast<vfs::directory>(item);
    if (!directory || depth > deepest) {
        fail();
    }
    const std::wstring below = prefix + directory->get_name() + L'\\';
    for (const vfs::item_ptr& listed : directory->get_items()) {
        const vfs::item_ptr child = directory->find_item_by_id(listed->get_id(), false);
        append(child, below);
        if (child->get_type() == vfs::type_directory) {
            append_children(child, below, depth + 1);
        }
    }
}

std::shared_ptr<vfs::file> CDescriptors::find_file(const std::shared_ptr<vfs::directory>& folder,
                                                   std::size_t index) const {
    if (std::ranges::binary_search(m_cut, index)) {
        fail();
    }
    vfs::item_ptr item = folder;
    std::wstring_view left = m_records[index].cFileName;
    for (bool last = false; !last;) {
        const auto directory = std::dynamic_pointer_cast<vfs::directory>(item);
        if (!directory || item->get_type() != vfs::type_directory) {
            fail();
        }
        const std::size_t end = left.find(L'\\');
        last = end == std::wstring_view::npos;
        item = directory->find_item_by_name(std::wstring(left.substr(0, end)), false);
        left.remove_prefix(last ? left.size() : end + 1);
    }
    auto file = std::dynamic_pointer_cast<vfs::file>(item);
    if (!file) {
        fail();
    }
    return file;
}

} // namespace transfer
