#include "transfer/opening/launch_files.h"

#include "com/guard.h"
#include "com/memory.h"
#include "resources/string_ids.h"
#include "shell_items/seams.h"
#include "ui/message.h"

#include <shellapi.h>
#include <shlobj.h>
#include <shlwapi.h>
#include <wrl/client.h>

#include <algorithm>
#include <optional>
#include <string>

namespace transfer {

namespace {

using Microsoft::WRL::ComPtr;
using paths = std::vector<std::filesystem::path>;

bool are_mixed(const paths& files) {
    return std::ranges::adjacent_find(files, [](const auto& left, const auto& right) {
               return CompareStringOrdinal(PathFindExtensionW(left.c_str()), -1,
                                           PathFindExtensionW(right.c_str()), -1,
                                           TRUE) != CSTR_EQUAL;
           }) != files.end();
}

/// The files as a data object of the folder in which they lie.
ComPtr<IDataObject> data_object_of(const paths& files) {
    ComPtr<IShellFolder> desktop;
    com::check(SHGetDesktopFolder(&desktop));
    std::wstring folder_path = files.front().parent_path().native();
    ITEMIDLIST* list = nullptr;
    com::check(
        desktop->ParseDisplayName(nullptr, nullptr, folder_path.data(), nullptr, &list, nullptr));
    const com::unique_id_list folder_list(list);
    ComPtr<IShellFolder> folder;
    com::check(desktop->BindToObject(folder_list.get(), nullptr, IID_PPV_ARGS(&folder)));
    std::vector<com::unique_id_list> owners;
    std::vector<const ITEMIDLIST*> children;
    for (const std::filesystem::path& file : files) {
        std::wstring name = file.filename().native();
        com::check(
            folder->ParseDisplayName(nullptr, nullptr, name.data(), nullptr, &list, nullptr));
        owners.emplace_back(list);
        children.push_back(list);
    }
    ComPtr<IDataObject> object;
    com::check(folder->GetUIObjectOf(nullptr, static_cast<UINT>(children.size()), children.data(),
                                     IID_IDataObject, nullptr, &object));
    return object;
}

/// Null when it cannot be made: the program may be gone.
ComPtr<IDropTarget> make_target(const GUID& target_class) {
    ComPtr<IDropTarget> target;
    if (FAILED(CoCreateInstance(target_class, nullptr, CLSCTX_ALL, IID_PPV_ARGS(&target)))) {
        target.Reset();
    }
    return target;
}

void drop_on(IDropTarget& target, const paths& files) {
    const ComPtr<IDataObject> object = data_object_of(files);
    DWORD effect = DROPEFFECT_COPY | DROPEFFECT_LINK;
    com::check(target.DragEnter(object.Get(), 0, POINTL{}, &effect));
    effect = DROPEFFECT_COPY | DROPEFFECT_LINK;
    com::check(target.Drop(object.Get(), 0, POINTL{}, &effect));
}

bool execute(const std::filesystem::path& file, HWND owner, HKEY verb_key,
             const std::wstring& verb) {
    SHELLEXECUTEINFOW info{};
    info.cbSize = sizeof(info);
    info.fMask = SEE_MASK_FLAG_NO_UI | SEE_MASK_WAITFORINPUTIDLE;
    info.hwnd = owner;
    info.lpFile = file.c_str();
    info.nShow = SW_SHOWNORMAL;
    if (verb_key) {
        info.fMask |= SEE_MASK_CLASSKEY;
        info.hkeyClass = verb_key;
        info.lpVerb = verb.empty() ? nullptr : verb.c_str();
    }
    return ShellExecuteExW(&info) != FALSE;
}

void tell_not_started(HWND owner) {
    ui::show_message(owner, IDS_ERROR, IDS_PROGRAM_NOT_STARTED, {}, MB_ICONSTOP);
}

} // namespace

void launch_files(const paths& files, HWND owner, HKEY verb_key, bool open_with) {
    const bool mixed = are_mixed(files);
    const shell::command_seams& commands = shell::get_seams().commands;
    if (open_with && !mixed && files.size() == 1) {
        if (!commands.ask_for_program(files.front().native())) {
            tell_not_started(owner);
        }
        return;
    }
    shell::class_verb verb;
    if (verb_key) {
        verb = commands.read_verb(verb_key);
    }
    if (!mixed && files.size() > 1 && verb.drop_target != GUID{}) {
        if (const ComPtr<IDropTarget> target = make_target(verb.drop_target)) {
            try {
                drop_on(*target.Get(), files);
            } catch (const com::status_exception&) {
                tell_not_started(owner);
            }
            return;
        }
    }
    for (const std::filesystem::path& file : files) {
        if (!execute(file, owner, verb_key, verb.name)) {
            tell_not_started(owner);
        }
    }
}

} // namespace transfer
