#include "commands/folder_commands.h"

#include "com/memory.h"
#include "commands/item_array.h"
#include "shell_items/file_types.h"
#include "shell_items/item_id_list.h"
#include "shell_items/seams.h"
#include "utils/module.h"

#include <shlobj.h>

#include <utility>
#include <vector>

namespace commands {

namespace {

using Microsoft::WRL::ComPtr;

constexpr GUID share_name = {
    0x32873188, 0xd900, 0x43ee, {0x9f, 0x95, 0x64, 0xae, 0xac, 0x98, 0x63, 0x06}};
constexpr GUID sync_files_name = {
    0x62f45232, 0x7a8c, 0x417a, {0xb6, 0x95, 0x52, 0xff, 0x5a, 0x6e, 0x89, 0x59}};
constexpr GUID backup_name = {
    0xf30d6b28, 0xf21b, 0x42cc, {0x96, 0x19, 0xaf, 0xbc, 0x11, 0xec, 0x7f, 0xfc}};
constexpr GUID music_name = {
    0x8f060650, 0x9408, 0x4e34, {0xbb, 0xdb, 0x2b, 0x3d, 0xe5, 0x14, 0xb0, 0x5f}};
constexpr GUID video_name = {
    0x9d8b7eae, 0xf72e, 0x496b, {0xa2, 0x62, 0x6d, 0x54, 0x58, 0x88, 0x99, 0x8b}};

constexpr std::size_t most_played = 255;

std::wstring own_icon() {
    return utils::own_module_path() + L",-0";
}

command_description music_description() {
    return {music_name, L"Play All Music", L"Play all music files in this folder",
            L"Shell32.dll,-246"};
}

command_description video_description() {
    return {video_name, L"Play All Video", L"Play all video files in this folder",
            L"Shell32.dll,-246"};
}

/// The lists of the folder's files of that kind, as many as are played.
std::vector<com::unique_id_list> files_of_kind(IShellFolder& folder,
                                               bool (*is_kind)(const std::wstring&)) {
    ComPtr<IEnumIDList> files;
    com::check(folder.EnumObjects(nullptr, SHCONTF_NONFOLDERS, &files));
    com::check(files->Reset());
    std::vector<com::unique_id_list> found;
    ITEMIDLIST* list = nullptr;
    while (found.size() < most_played && files->Next(1, &list, nullptr) == S_OK) {
        com::unique_id_list owned(list);
        const auto record =
            shell::read_record({reinterpret_cast<const std::byte*>(list), list->mkid.cb});
        if (record && is_kind(record->get_name())) {
            found.push_back(std::move(owned));
        }
    }
    return found;
}

} // namespace

CExplorerCommandShare::CExplorerCommandShare(ComPtr<IShellFolder> folder)
    : CExplorerCommandImpl({share_name, L"Share",
                            L"Share the selected files and folders with other peoples in the "
                            L"Quilldeck",
                            L"shell32.dll,-267"}),
      m_folder(std::move(folder)) {}

bool CExplorerCommandShare::is_offered(IShellItemArray* items) {
    const auto record = single_record(items);
    return record && record->is_directory() && record->is_own_directory != 0;
}

void CExplorerCommandShare::invoke(IShellItemArray* items) {
    if (count_of(items) != 1) {
        return;
    }
    const ComPtr<IDataObject> data = data_object_of(*items, *m_folder.Get());
    com::check(shell::get_seams().dialogs.show_properties(*data.Get(), GetDesktopWindow(),
                                                          shell::properties_page::sharing));
}

CExplorerCommandSyncFiles::CExplorerCommandSyncFiles()
    : CExplorerCommandImpl(
          {sync_files_name, L"Sync files", L"Manage the Permanently Syncing Files", own_icon()}) {}

bool CExplorerCommandSyncFiles::is_offered(IShellItemArray* items) {
    return items == nullptr;
}

void CExplorerCommandSyncFiles::invoke(IShellItemArray*) {
    com::check(shell::get_seams().dialogs.show_sync_manager(GetDesktopWindow()));
}

CExplorerCommandBackupPC::CExplorerCommandBackupPC()
    : CExplorerCommandImpl(
          {backup_name, L"Backup PC", L"Backup your documents to Quilldeck", own_icon()}) {}

bool CExplorerCommandBackupPC::is_offered(IShellItemArray* items) {
    return items == nullptr;
}

void CExplorerCommandBackupPC::invoke(IShellItemArray*) {
    com::check(shell::get_seams().local.back_up_profile(GetDesktopWindow()));
}

CExplorerCommandPlayAll::CExplorerCommandPlayAll(kind played, ComPtr<IShellFolder> folder,
                                                 std::shared_ptr<vfs::directory> directory)
    : CExplorerCommandImpl(played == kind::music ? music_description() : video_description()),
      m_kind(played), m_folder(std::move(folder)), m_directory(std::move(directory)) {}

bool CExplorerCommandPlayAll::is_offered(IShellItemArray*) {
    const auto bit = m_kind == kind::music ? vfs::folder_has_audio : vfs::folder_has_video;
    return (m_directory->get_folder_flags() & bit) != 0;
}

void CExplorerCommandPlayAll::invoke(IShellItemArray*) {
    const auto files =
        files_of_kind(*m_folder.Get(), m_kind == kind::music ? &shell::is_audio : &shell::is_video);
    if (files.empty()) {
        return;
    }
    std::vector<PCUITEMID_CHILD> children;
    children.reserve(files.size());
    for (const com::unique_id_list& file : files) {
        children.push_back(file.get());
    }
    ComPtr<IDataObject> data;
    com::check(m_folder->GetUIObjectOf(nullptr, static_cast<UINT>(children.size()), children.data(),
                                       IID_IDataObject, nullptr, &data));
    com::check(shell::get_seams().transfer.open(*data.Get(), GetDesktopWindow(), nullptr, false));
}

} // namespace commands
