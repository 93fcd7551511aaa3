#include "shell_items/item_record.h"

#include "shell_items/file_types.h"
#include "vfs/directory.h"
#include "vfs/file.h"

#include <algorithm>
#include <cwchar>
#include <memory>

namespace shell {

namespace {

template <std::size_t Size>
void copy_text(wchar_t (&field)[Size], const std::wstring& text) noexcept {
    std::fill(field, field + Size, L'\0');
    text.copy(field, Size - 1);
}

template <std::size_t Size>
std::wstring read_text(const wchar_t (&field)[Size]) {
    return {field, wcsnlen(field, Size)};
}

} // namespace

double to_ole_date(vfs::time_seconds time) {
    constexpr double seconds_a_day = 86400.0;
    constexpr double days_to_1970 = 25569.0;
    const auto seconds = static_cast<double>(time);
    return seconds > 0.0 ? seconds / seconds_a_day + days_to_1970 : seconds;
}

PIDLDATA::PIDLDATA() noexcept
    : cb(record_size), type{}, has_subfolders{}, is_shared{}, is_own_directory{},
      is_root_directory{}, reserved_1{}, name{}, type_text{}, id{}, reserved_2{}, size{},
      creation_date{}, access_date{}, modification_date{}, delete_date{}, attributes{},
      reserved_3{} {}

PIDLDATA::PIDLDATA(const vfs::item_ptr& item, file_types& types) : PIDLDATA() {
    type = static_cast<std::uint8_t>(item->get_type());
    const std::wstring item_name = item->get_name();
    copy_text(name, item_name);
    copy_text(id, item->get_id());
    size = -1;
    creation_date = access_date = modification_date = delete_date = no_date;

    const auto directory = std::dynamic_pointer_cast<vfs::directory>(item);
    if (is_directory() && directory) {
        has_subfolders = directory->has_subfolders();
        is_shared = directory->is_shared();
        is_own_directory = directory->is_own_directory();
        is_root_directory = directory->is_root_directory();
        creation_date = to_ole_date(directory->get_creation_date());
        delete_date = to_ole_date(directory->get_delete_date());
        copy_text(type_text, types.directory_text());
    } else if (const auto file = std::dynamic_pointer_cast<vfs::file>(item)) {
        size = file->get_size();
        creation_date = to_ole_date(file->get_creation_date());
        access_date = to_ole_date(file->get_access_date());
        modification_date = to_ole_date(file->get_modification_date());
        delete_date = to_ole_date(file->get_delete_date());
        attributes = file->get_attributes();
        copy_text(type_text, types.of_file(item_name).text);
    }
}

PIDLDATA::PIDLDATA(const vfs::item_ptr& item) {
    file_types types;
    *this = PIDLDATA(item, types);
}

std::wstring PIDLDATA::get_name() const {
    return read_text(name);
}

std::wstring PIDLDATA::get_type_text() const {
    return read_text(type_text);
}

std::wstring PIDLDATA::get_id() const {
    return read_text(id);
}

void PIDLDATA::set_name(const std::wstring& text) noexcept {
    copy_text(name, text);
}

bool operator==(const PIDLDATA& left, const PIDLDATA& right) noexcept {
    return left.cb == right.cb && left.type == right.type &&
           left.has_subfolders == right.has_subfolders &&
           std::ranges::equal(left.name, right.name) &&
           std::ranges::equal(left.type_text, right.type_text) && left.size == right.size;
}

} // namespace shell
