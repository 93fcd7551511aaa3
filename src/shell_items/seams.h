/// What the layers above this one ask of each other. None of them knows the others: each has one
/// table here, with a row for everything that it does for them, and the module fills the tables in
/// once, when it loads, and does no other work for it.
#pragma once

#include "shell_items/item_id_list.h"
#include "shell_items/selection.h"
#include "utils/named_mutex.h"
#include "vfs/item.h"

#include <windows.h>

#include <shobjidl.h>
#include <shtypes.h>

#include <span>
#include <string>
#include <vector>

namespace shell {

/// The row of an object that nobody makes: it is not offered.
template <class... Arguments>
HRESULT not_offered(Arguments...) noexcept {
    return E_NOINTERFACE;
}

/// The pages of an item's properties, in their order.
enum class properties_page { general = 0, sharing = 1, synchronization = 2 };

/// What the dialogs do for the others. A row that is null is a window that this build does not
/// have: nothing that leads there is shown.
struct dialog_seams {
    /// Sees to it that a user is signed in, by the login dialog on top of `owner` if need be. Takes
    /// `mutex` for that time. False when the dialog was cancelled. May throw a `vfs::exception` or
    /// a standard exception.
    bool (*sign_in)(utils::named_mutex& mutex, HWND owner) = [](utils::named_mutex&, HWND) {
        return false;
    };
    /// Shows the properties of the items of a data object of this program, at `page`.
    HRESULT (*show_properties)(IDataObject& items, HWND owner, properties_page page) = nullptr;
    /// Shows the bindings of local files and folders, modally.
    HRESULT (*show_sync_manager)(HWND owner) = nullptr;
};

/// What the layer of local files does for the others; null as in `dialog_seams`.
struct local_seams {
    /// Shows the properties of the user's own local folder, at the page that backs it up.
    HRESULT (*back_up_profile)(HWND owner) = nullptr;
};

/// A file to play.
struct played_file {
    std::wstring title; ///< the file's name, whose extension tells its kind
    std::wstring link;  ///< serves its bytes
};

/// What a class of files does by default.
struct class_verb {
    std::wstring name;  ///< empty when the class has no key for it
    GUID drop_target{}; ///< what takes several files at once; null when there is none
};

/// What the commands do for the others. They throw standard exceptions only.
struct command_seams {
    /// Plays `files`: one by the program of the class `key`, or of its title when that is null;
    /// several by a playlist that is named `base`. With `ask` the user chooses the program. What
    /// fails has no effect.
    void (*play)(std::vector<played_file> files, HKEY key, const std::wstring& base,
                 bool ask) = nullptr;
    /// Lets the user choose the program for a local path. False when that cannot be shown.
    bool (*ask_for_program)(const std::wstring& path) = nullptr;
    class_verb (*read_verb)(HKEY key) = nullptr;
    /// The toolbar of `folder`, a folder of the drive, queried for `iid`.
    HRESULT (*create_command_provider)(IShellFolder& folder, REFIID iid,
                                       void** result) = &not_offered;
    /// The menu of `items` in `folder`, whose absolute list `list` is.
    HRESULT(*create_item_menu)
    (HWND owner, IShellFolder& folder, const CItemIDList& list,
     std::span<const PCUITEMID_CHILD> items, REFIID iid, void** result) = &not_offered;
    /// The menu of the background of `folder`, which stands for `directory`, a `vfs::directory`.
    /// `root` is the absolute list of the drive, and `path` leads from there to the folder.
    HRESULT(*create_background_menu)
    (IShellFolder& folder, const vfs::item_ptr& directory, const CItemIDList& root,
     const CItemIDList& path, REFIID iid, void** result) = &not_offered;
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
    /// What a data object of this program holds.
    HRESULT (*get_selection)(IDataObject& items, selection& result) = nullptr;
    /// Starts the worker that opens the items, as `transfer::open_selection` tells.
    HRESULT (*open)(IDataObject& items, HWND owner, HKEY verb_key, bool open_with) = nullptr;
    /// Starts the worker that deletes the items, once the user has agreed.
    HRESULT (*remove)(IDataObject& items, HWND owner) = nullptr;
    /// Brings items back from the Trash.
    HRESULT (*restore)(IDataObject& items, HWND owner) = nullptr;
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
    command_seams commands{};
    local_seams local{};
};

/// To be called before any object of those layers exists.
void set_seams(const seams& table) noexcept;
const seams& get_seams() noexcept;

} // namespace shell
