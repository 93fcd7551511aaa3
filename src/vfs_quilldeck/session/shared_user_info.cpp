#include "vfs_quilldeck/session/shared_user_info.h"

#include <algorithm>
#include <string>

namespace vfs_quilldeck {

namespace {

template <std::size_t size>
void put(char16_t (&field)[size], const std::wstring& text) {
    std::copy_n(text.begin(), std::min(text.size(), size - 1), field);
}

template <std::size_t size>
std::wstring take(const char16_t (&field)[size]) {
    // Another process wrote this: the field's end counts as its terminator.
    return {field, std::find(field, field + size, u'\0')};
}

} // namespace

shared_user_info pack(const vfs::user_info& info) {
    shared_user_info record{};
    put(record.UserID, info.user_id);
    put(record.UserAccessID, info.user_access_id);
    put(record.UserName, info.user_name);
    put(record.UserLang, info.user_lang);
    put(record.UserLevel, info.user_level);
    return record;
}

vfs::user_info unpack(const shared_user_info& record) {
    return {take(record.UserID), take(record.UserAccessID), take(record.UserName),
            take(record.UserLang), take(record.UserLevel)};
}

} // namespace vfs_quilldeck
