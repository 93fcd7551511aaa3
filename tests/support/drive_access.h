/// The way of tests to the drive and its items.
#pragma once

#include "com/guard.h"
#include "com/memory.h"
#include "utils/module.h"
#include "vfs_quilldeck/session/pc_id.h"
#include "vfs_quilldeck/session/session.h"

#include <shlobj.h>

#include <string>

namespace support {

/// Signs the demo user in for all processes of the desktop, unless that was done already. Answers
/// this process's client.
inline vfs::client_ptr sign_in() {
    if (!vfs_quilldeck::is_logged_in(utils::own_module())) {
        vfs_quilldeck::ensure_pc_id();
        vfs_quilldeck::login(utils::own_module(), L"demo", L"demo");
    }
    return vfs_quilldeck::get_client(utils::own_module());
}

/// The list that `folder` parses from `name`. Throws a status.
inline com::unique_id_list parse(IShellFolder& folder, std::wstring name) {
    ITEMIDLIST* list = nullptr;
    com::check(folder.ParseDisplayName(nullptr, nullptr, name.data(), nullptr, &list, nullptr));
    return com::unique_id_list(list);
}

} // namespace support
