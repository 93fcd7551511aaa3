#include "module/object_map.h"

#include "com/class_ids.h"
#include "dialogs/drive/properties_drive.h"
#include "dialogs/sync/properties_sync.h"
#include "local/context_menu.h"
#include "local/overlay_icon.h"
#include "resources/resource_ids.h"
#include "shell/shell_folder.h"
#include "transfer/data_object/data_object.h"
#include "vfs_quilldeck/session/pc_id.h"

#include <objbase.h>

#include <array>
#include <string>

namespace module {

namespace {

constexpr auto application_name = L"Quilldeck";
constexpr auto approved_extensions =
    L"Software\\Microsoft\\Windows\\CurrentVersion\\Shell Extensions\\Approved";

/// What the shell may know of the drive without asking us.
constexpr DWORD drive_attributes = SFGAO_CANCOPY | SFGAO_CANMOVE | SFGAO_CANRENAME |
                                   SFGAO_HASPROPSHEET | SFGAO_DROPTARGET | SFGAO_STREAM |
                                   SFGAO_STORAGEANCESTOR | SFGAO_BROWSABLE | SFGAO_FILESYSANCESTOR |
                                   SFGAO_FOLDER | SFGAO_HASSUBFOLDER;
static_assert(drive_attributes == 3099590995, "the number in namespace_folder.rgs");

std::wstring text_of(REFGUID id) {
    std::array<wchar_t, 39> text{};
    ::StringFromGUID2(id, text.data(), static_cast<int>(text.size()));
    return text.data();
}

/// Wine's interpreter of scripts leaves single values in keys that stay.
void end_approval(const std::wstring& id) {
    ::RegDeleteKeyValueW(HKEY_LOCAL_MACHINE, approved_extensions, id.c_str());
}

/// Wine's interpreter of scripts ends numbers at 2^31 - 1. Elsewhere this changes nothing.
void complete_shell_folder(const std::wstring& id, com::registration direction) {
    if (direction == com::registration::add) {
        const std::wstring key = L"CLSID\\" + id + L"\\ShellFolder";
        com::check(HRESULT_FROM_WIN32(static_cast<DWORD>(
            ::RegSetKeyValueW(HKEY_CLASSES_ROOT, key.c_str(), L"Attributes", REG_DWORD,
                              &drive_attributes, sizeof(drive_attributes)))));
    } else {
        end_approval(id);
    }
}

void update_shell_folder(com::registrar& scripts, com::registration direction) {
    if (direction == com::registration::add) {
        vfs_quilldeck::ensure_pc_id();
    }
    const std::wstring id = text_of(com::CLSID_ShellFolderImpl);
    scripts.replace(L"CLSID", id);
    scripts.replace(L"APP_NAME", application_name);
    scripts.run(IDR_NAMESPACE_FOLDER, direction);
    complete_shell_folder(id, direction);
}

void update_local_menu(com::registrar& scripts, com::registration direction) {
    scripts.run(IDR_LOCAL_CONTEXT_MENU, direction);
}

void update_sync_properties(com::registrar& scripts, com::registration direction) {
    scripts.replace(L"APP_NAME", application_name);
    scripts.run(IDR_SYNC_PROPERTY_SHEET, direction);
}

void update_overlay_icon(com::registrar& scripts, com::registration direction) {
    scripts.run(IDR_OVERLAY_ICON, direction);
}

void update_drive_properties(com::registrar& scripts, com::registration direction) {
    const std::wstring id = text_of(com::CLSID_PropertiesDriveDlg);
    scripts.replace(L"CLSID", id);
    scripts.replace(L"DRIVECLSID", text_of(com::CLSID_ShellFolderImpl));
    scripts.replace(L"APP_NAME", application_name);
    scripts.run(IDR_DRIVE_PROPERTY_SHEET, direction);
    if (direction == com::registration::remove) {
        end_approval(id);
        // The drive's own script went first, and Wine's interpreter left a key in which others have
        // theirs.
        const std::wstring drive = L"CLSID\\" + text_of(com::CLSID_ShellFolderImpl);
        ::RegDeleteTreeW(HKEY_CLASSES_ROOT, drive.c_str());
    }
}

constinit object_map_entry classes[] = {
    {com::CLSID_ShellFolderImpl, com::class_factory(&com::create<shell::CShellFolderImpl>),
     &update_shell_folder},
    {com::CLSID_DataObjectImpl, com::class_factory(&com::create<transfer::CDataObjectImpl>),
     nullptr},
    {com::CLSID_ShellContextMenu, com::class_factory(&com::create<local::CShellContextMenu>),
     &update_local_menu},
    {com::CLSID_PropertiesSyncDlg, com::class_factory(&com::create<dialogs::CPropertiesSyncDlg>),
     &update_sync_properties},
    {com::CLSID_ShellOverlayIcon, com::class_factory(&com::create<local::CShellOverlayIcon>),
     &update_overlay_icon},
    {com::CLSID_PropertiesDriveDlg, com::class_factory(&com::create<dialogs::CPropertiesDriveDlg>),
     &update_drive_properties},
};

} // namespace

std::span<object_map_entry> object_map() noexcept {
    return classes;
}

} // namespace module
