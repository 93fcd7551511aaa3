#pragma once

#include "vfs/item.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <type_traits>

namespace shell {

class file_types;

/// `time` in days since 1899-12-30 (UTC); what is not above 0, such as -1 for no date, stays.
double to_ole_date(vfs::time_seconds time);

/// The date of a record that has none.
inline constexpr double no_date = -1.0;

/// One identifier of the namespace: a snapshot of an item as it was listed, from which the shell's
/// columns, attributes and order come without a look at the store. Its `id` is the one link back.
/// The shell keeps these bytes in shortcuts and in its history, so that no field ever moves. All
/// is little-endian; texts are padded with zeros, but those of a foreign hand need not be.
struct PIDLDATA {
    std::uint16_t cb;            ///< the record's size
    std::uint8_t type;           ///< a `vfs::item_type`; 0: an item that does not exist yet
    std::uint8_t has_subfolders; ///< the four flags are 0 on a file
    std::uint8_t is_shared;
    std::uint8_t is_own_directory;
    std::uint8_t is_root_directory;
    std::uint8_t reserved_1;
    wchar_t name[260];
    wchar_t type_text[80];
    wchar_t id[50];
    std::uint8_t reserved_2[4];
    std::int64_t size;        ///< in bytes; -1: a directory
    double creation_date;     ///< all dates as `to_ole_date` makes them
    double access_date;       ///< `no_date` on a directory
    double modification_date; ///< `no_date` on a directory
    double delete_date;       ///< `no_date` on all but an item in the Trash
    std::uint32_t attributes; ///< the platform's file attributes
    std::uint8_t reserved_3[4];

    /// A record of which `cb` alone is set.
    PIDLDATA() noexcept;
    /// The snapshot of `item`; makes no request and keeps no reference. Longer texts are cut.
    /// Throws what the item's accessors throw.
    explicit PIDLDATA(const vfs::item_ptr& item);
    /// The same, with the type texts taken from `types`.
    PIDLDATA(const vfs::item_ptr& item, file_types& types);

    bool is_directory() const noexcept { return type == vfs::type_directory; }

    bool is_file() const noexcept { return type == vfs::type_file; }

    /// Does not lie in the Trash.
    bool is_live() const noexcept { return delete_date == no_date; }

    /// The texts, each up to its terminator or to the end of its field.
    std::wstring get_name() const;
    std::wstring get_type_text() const;
    std::wstring get_id() const;
    /// Cuts the name to what the field holds beside a terminator.
    void set_name(const std::wstring& text) noexcept;

    /// Whether both show the same item in the same state; dates, `id`, `attributes` and the other
    /// flags take no part.
    friend bool operator==(const PIDLDATA& left, const PIDLDATA& right) noexcept;
};

inline constexpr std::size_t record_size = 840;

static_assert(sizeof(wchar_t) == 2);
static_assert(std::is_standard_layout_v<PIDLDATA> && std::is_trivially_copyable_v<PIDLDATA>);
static_assert(sizeof(PIDLDATA) == record_size);
static_assert(offsetof(PIDLDATA, cb) == 0);
static_assert(offsetof(PIDLDATA, type) == 2);
static_assert(offsetof(PIDLDATA, has_subfolders) == 3);
static_assert(offsetof(PIDLDATA, is_shared) == 4);
static_assert(offsetof(PIDLDATA, is_own_directory) == 5);
static_assert(offsetof(PIDLDATA, is_root_directory) == 6);
static_assert(offsetof(PIDLDATA, name) == 8);
static_assert(offsetof(PIDLDATA, type_text) == 528);
static_assert(offsetof(PIDLDATA, id) == 688);
static_assert(offsetof(PIDLDATA, size) == 792);
static_assert(offsetof(PIDLDATA, creation_date) == 800);
static_assert(offsetof(PIDLDATA, access_date) == 808);
static_assert(offsetof(PIDLDATA, modification_date) == 816);
static_assert(offsetof(PIDLDATA, delete_date) == 824);
static_assert(offsetof(PIDLDATA, attributes) == 832);

} // namespace shell
