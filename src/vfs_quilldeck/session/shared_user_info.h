#pragma once

#include "vfs/records.h"

#include <cstddef>

namespace vfs_quilldeck {

/// The identity as it lies in shared memory, read and written by processes of either word size.
/// Each text ends with a zero; an empty `UserID` means that nobody is signed in.
struct shared_user_info {
    char16_t UserID[64];
    char16_t UserAccessID[64];
    char16_t UserName[128];
    char16_t UserLang[8];
    char16_t UserLevel[8];
};

static_assert(sizeof(shared_user_info) == 544);
static_assert(offsetof(shared_user_info, UserID) == 0);
static_assert(offsetof(shared_user_info, UserAccessID) == 128);
static_assert(offsetof(shared_user_info, UserName) == 256);
static_assert(offsetof(shared_user_info, UserLang) == 512);
static_assert(offsetof(shared_user_info, UserLevel) == 528);

/// Texts that are longer than their field are cut to the field's length less one.
shared_user_info pack(const vfs::user_info& info);
vfs::user_info unpack(const shared_user_info& record);

} // namespace vfs_quilldeck
