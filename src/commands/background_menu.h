#pragma once

#include "com/object.h"
#include "com/sited.h"
#include "shell_items/item_id_list.h"
#include "shell_items/seams.h"
#include "vfs/directory.h"

#include <shlobj.h>
#include <wrl/client.h>

#include <memory>
#include <optional>
#include <string>

namespace commands {

/// The menu of a folder's background. It belongs to the thread of the view.
class CBGContextMenu final : public com::object<CBGContextMenu, IContextMenu, com::sited> {
public:
    /// `folder` is the folder of the drive that stands for `directory`, `root` the absolute list of
    /// the drive, and `path` leads from there to the folder.
    CBGContextMenu(Microsoft::WRL::ComPtr<IShellFolder> folder,
                   std::shared_ptr<vfs::directory> directory, shell::CItemIDList root,
                   shell::CItemIDList path);

    HRESULT STDMETHODCALLTYPE QueryContextMenu(HMENU hmenu, UINT indexMenu, UINT idCmdFirst,
                                               UINT idCmdLast, UINT uFlags) override;
    HRESULT STDMETHODCALLTYPE InvokeCommand(CMINVOKECOMMANDINFO* pici) override;
    HRESULT STDMETHODCALLTYPE GetCommandString(UINT_PTR idCmd, UINT uType, UINT* pReserved,
                                               CHAR* pszName, UINT cchMax) override;

private:
    void make_folder();
    std::wstring free_name() const;
    void edit_name(const shell::PIDLDATA& made) const;
    void paste(HWND owner) const;
    void show_properties(HWND owner, shell::properties_page page) const;

    const Microsoft::WRL::ComPtr<IShellFolder> m_folder;
    const std::shared_ptr<vfs::directory> m_directory;
    const shell::CItemIDList m_root;
    const shell::CItemIDList m_path;
    /// Where the menu was, once there was one.
    std::optional<POINT> m_cursor;
};

} // namespace commands
