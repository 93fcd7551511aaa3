#include "commands/command_provider.h"

#include "com/guard.h"
#include "commands/command_enumerator.h"
#include "commands/folder_commands.h"
#include "commands/open_commands.h"
#include "shell_items/seams.h"
#include "shell_items/shell_folder_interface.h"

#include <utility>

namespace commands {

namespace {

using Microsoft::WRL::ComPtr;

std::shared_ptr<vfs::directory> connected(IShellFolder& folder) {
    try {
        return shell::get_directory(folder, nullptr);
    } catch (const com::status_exception&) {
        throw com::status_exception(E_FAIL);
    }
}

} // namespace

CExplorerCommandProviderImpl::CExplorerCommandProviderImpl(ComPtr<IShellFolder> folder)
    : m_folder(std::move(folder)) {}

HRESULT CExplorerCommandProviderImpl::GetCommands(IUnknown*, REFIID riid, void** ppv) {
    return com::guard([&]() -> HRESULT {
        com::cleared(ppv);
        const std::shared_ptr<vfs::directory> directory = connected(*m_folder.Get());
        if (!IsEqualIID(riid, IID_IEnumExplorerCommand)) {
            return E_NOINTERFACE;
        }
        const shell::seams& offered = shell::get_seams();
        const bool at_top = directory->get_folder_flags() == vfs::folder_root;
        using play_all = CExplorerCommandPlayAll;
        command_list commands;
        commands.emplace_back(com::make<CExplorerCommandOpen>(m_folder));
        if (offered.dialogs.show_properties) {
            commands.emplace_back(com::make<CExplorerCommandShare>(m_folder));
        }
        if (at_top && offered.dialogs.show_sync_manager) {
            commands.emplace_back(com::make<CExplorerCommandSyncFiles>());
        }
        if ((at_top || directory->is_home_folder()) && offered.local.back_up_profile) {
            commands.emplace_back(com::make<CExplorerCommandBackupPC>());
        }
        for (const play_all::kind played : {play_all::kind::music, play_all::kind::video}) {
            commands.emplace_back(com::make<play_all>(played, m_folder, directory));
        }
        return com::make<CEnumExplorerCommandImpl>(std::move(commands))->QueryInterface(riid, ppv);
    });
}

HRESULT CExplorerCommandProviderImpl::GetCommand(REFGUID, REFIID, void** ppv) {
    return com::guard([&] {
        com::cleared(ppv);
        return E_NOTIMPL;
    });
}

} // namespace commands
