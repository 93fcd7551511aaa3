#pragma once

#include "commands/explorer_command.h"
#include "vfs/directory.h"

#include <wrl/client.h>

#include <memory>

namespace commands {

/// Shares the one folder that is selected.
class CExplorerCommandShare final : public CExplorerCommandImpl {
public:
    explicit CExplorerCommandShare(Microsoft::WRL::ComPtr<IShellFolder> folder);

protected:
    bool is_offered(IShellItemArray* items) override;
    void invoke(IShellItemArray* items) override;

private:
    const Microsoft::WRL::ComPtr<IShellFolder> m_folder;
};

/// Shows the bindings of local files and folders.
class CExplorerCommandSyncFiles final : public CExplorerCommandImpl {
public:
    CExplorerCommandSyncFiles();

protected:
    bool is_offered(IShellItemArray* items) override;
    void invoke(IShellItemArray* items) override;
};

/// Offers to back up the user's documents.
class CExplorerCommandBackupPC final : public CExplorerCommandImpl {
public:
    CExplorerCommandBackupPC();

protected:
    bool is_offered(IShellItemArray* items) override;
    void invoke(IShellItemArray* items) override;
};

/// Plays the files of one kind that lie in the folder, 255 at the most.
class CExplorerCommandPlayAll final : public CExplorerCommandImpl {
public:
    enum class kind { music, video };

    CExplorerCommandPlayAll(kind played, Microsoft::WRL::ComPtr<IShellFolder> folder,
                            std::shared_ptr<vfs::directory> directory);

protected:
    /// Only once the folder was listed, as that tells what is in it.
    bool is_offered(IShellItemArray* items) override;
    void invoke(IShellItemArray* items) override;

private:
    const kind m_kind;
    const Microsoft::WRL::ComPtr<IShellFolder> m_folder;
    const std::shared_ptr<vfs::directory> m_directory;
};

} // namespace commands
