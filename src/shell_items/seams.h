/// What the shell layer asks of the layers beside it. The module fills the table in once, when it
/// loads, and does no other work for it.
#pragma once

#include "utils/named_mutex.h"
#include "vfs/item.h"

#include <windows.h>

namespace shell {

struct seams {
    /// Sees to it that a user is signed in, by the login dialog on top of `owner` if need be. Takes
    /// `mutex` for that time. False when the dialog was cancelled. May throw a `vfs::exception` or
    /// a standard exception.
    bool (*sign_in)(utils::named_mutex& mutex, HWND owner) = nullptr;
    /// Makes a stream over `file`, a `vfs::file`, and queries it. Never throws.
    HRESULT (*create_stream)(const vfs::item_ptr& file, REFIID iid, void** result) = nullptr;
};

/// To be called before any object of this layer exists.
void set_seams(const seams& table) noexcept;
const seams& get_seams() noexcept;

} // namespace shell
