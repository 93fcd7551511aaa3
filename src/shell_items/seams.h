/// What the layers above this one ask of each other. None of them knows the others: each has one
/// table here, with a row for everything that it does for them, and the module fills the tables in
/// once, when it loads, and does no other work for it.
#pragma once

#include "shell_items/item_id_list.h"
#include "utils/named_mutex.h"
#include "vfs/item.h"

#include <windows.h>

#include <shtypes.h>

#include <span>

namespace shell {

/// The row of an object that nobody makes: it is not offered.
template <class... Arguments>
HRESULT not_offered(Arguments...) noexcept {
    return E_NOINTERFACE;
}

/// What the dialogs do for the others.
struct dialog_seams {
    /// Sees to it that a user is signed in, by the login dialog on top of `owner` if need be. Takes
    /// `mutex` for that time. False when the dialog was cancelled. May throw a `vfs::exception` or
    /// a standard exception.
    bool (*sign_in)(utils::named_mutex& mutex, HWND owner) = [](utils::named_mutex&, HWND) {
        return false;
    };
};

/// What the transfers do for the others. Each row makes an object and queries it for `iid`; none of
/// them throws or asks the store. `root` is the absolute list of the drive, as `head`, and `path`
/// the records from there to a folder; both are copied.
struct transfer_seams {
    /// A stream over `file`, a `vfs::file`.
    HRESULT (*create_stream)(const vfs::item_ptr& file, REFIID iid, void** result) = &not_offered;
    /// The children `items` of `directory`, a `vfs::directory`, as lists of one record each, on
    /// their way out. `owner` is the window of what is asked on the way.
    HRESULT(*create_data_object)
    (const vfs::item_ptr& directory, const CItemIDList& root, const CItemIDList& path, HWND owner,
     std::span<const PCUITEMID_CHILD> items, REFIID iid, void** result) = &not_offered;
    /// What takes in what is dropped on `folder`, a folder of the drive.
    HRESULT(*create_drop_target)
    (IUnknown& folder, const CItemIDList& root, const CItemIDList& path, HWND owner, REFIID iid,
     void** result) = &not_offered;
    /// The source's side of a drag.
    HRESULT (*create_drop_source)(REFIID iid, void** result) = &not_offered;
};

/// What the drive's folders do for the others.
struct folder_seams {
    /// The drive, to be placed by `IPersistFolder::Initialize`, queried for `iid`.
    HRESULT (*create_drive)(REFIID iid, void** result) = &not_offered;
};

struct seams {
    dialog_seams dialogs{};
    transfer_seams transfer{};
    folder_seams folders{};
};

/// To be called before any object of those layers exists.
void set_seams(const seams& table) noexcept;
const seams& get_seams() noexcept;

} // namespace shell
