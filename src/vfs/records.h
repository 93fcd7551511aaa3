/// The plain values that cross the file-system contracts.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace vfs {

/// Seconds since 1970-01-01 00:00 UTC.
using time_seconds = std::int64_t;
/// The value of a date that is not known.
inline constexpr time_seconds time_unknown = -1;

/// Opaque bytes, such as those of a thumbnail.
using byte_buffer = std::vector<unsigned char>;

/// What `item::get_type` answers.
enum item_type : std::int32_t { type_directory = 1, type_file = 2 };

/// Who may reach an item: `item::get_access`.
enum access_value : std::int32_t { access_private = 0, access_public = 1, access_hidden = 2 };

/// The modes of `file::open`, bit flags.
enum open_mode : std::int32_t {
    modeRead = 1,      ///< read from the beginning
    modeWrite = 2,     ///< write
    modeOverwrite = 4, ///< replace existing content; without it a local file is appended to
};

/// Where `file::seek` counts from.
enum seek_origin : std::int32_t { seek_beginning = 0, seek_current = 1, seek_ending = 2 };

/// The bits of `directory::get_folder_flags`. The kind bits are fixed by the class of a directory,
/// the content bits are kept by the folder view.
enum folder_flag : std::uint32_t {
    folder_root = 0x01,
    folder_has_audio = 0x02,
    folder_initial = 0x04,
    folder_has_video = 0x08,
    folder_shared_container = 0x20,
    folder_users = 0x40,
    folder_trash = 0x80,
};

/// The identity of a session.
struct user_info {
    std::wstring user_id;        ///< empty: nobody is signed in
    std::wstring user_access_id; ///< not empty: a guest session through an access id
    std::wstring user_name;      ///< display name
    std::wstring user_lang;      ///< language code, sent back on each request
    std::wstring user_level;     ///< account level, sent back on each request

    friend bool operator==(const user_info&, const user_info&) = default;
};

/// One piece of news for the user.
struct notification {
    std::wstring title;
    std::wstring text;
    std::wstring url;
};

/// Quota figures, in bytes.
struct storage_info {
    std::int64_t capacity = 0;
    std::int64_t space_used = 0;
    std::int64_t space_free = 0;
};

/// One setting of the account.
struct pro_setting {
    std::wstring name;
    std::wstring value;
    std::int32_t type = 0; ///< 0 text, 1 integer, 2 float
};

} // namespace vfs
