#pragma once

#include "com/object.h"
#include "shell_items/item_id_list.h"
#include "transfer/drop_transfer.h"
#include "vfs/directory.h"

#include <oleidl.h>
#include <shlobj.h>
#include <wrl/client.h>

#include <memory>

namespace transfer {

/// What a folder of the drive gives the shell when something is dragged over it or pasted into it:
/// takes in local files and the virtual files of any program, those of the drive itself included.
class CDropTargetImpl final : public com::object<CDropTargetImpl, IDropTarget> {
public:
    /// `folder` is a folder of the drive, whose list is `root` and `path`; it may also stand on a
    /// file. `owner` is the parent of all windows. With `helper_wanted` the platform draws what is
    /// dragged.
    HRESULT Init(IUnknown* folder, const shell::CItemIDList& root, const shell::CItemIDList& path,
                 HWND owner, bool helper_wanted) noexcept;

    HRESULT STDMETHODCALLTYPE DragEnter(IDataObject* data, DWORD keys, POINTL point,
                                        DWORD* effect) override;
    HRESULT STDMETHODCALLTYPE DragOver(DWORD keys, POINTL point, DWORD* effect) override;
    HRESULT STDMETHODCALLTYPE DragLeave() override;
    HRESULT STDMETHODCALLTYPE Drop(IDataObject* data, DWORD keys, POINTL point,
                                   DWORD* effect) override;

private:
    void show(const drop_outcome& outcome) const noexcept;
    DWORD choose_effect(DWORD keys, DWORD allowed) const noexcept;
    bool is_same_folder(IDataObject& data) const;
    /// The directory into which things fall: of a file, the one beside which they come to lie.
    std::shared_ptr<vfs::directory> find_directory() const;

    Microsoft::WRL::ComPtr<IDataObject> m_data;
    /// May be absent.
    Microsoft::WRL::ComPtr<IDropTargetHelper> m_helper;
    Microsoft::WRL::ComPtr<IUnknown> m_folder;
    HWND m_owner = nullptr;
    /// Null until the first drop.
    std::shared_ptr<vfs::directory> m_directory;
    shell::CItemIDList m_root;
    shell::CItemIDList m_path;
    bool m_acceptable = false;
};

/// One for `folder`, as `CDropTargetImpl::Init` has it, queried for `iid`.
HRESULT create_drop_target(IUnknown& folder, const shell::CItemIDList& root,
                           const shell::CItemIDList& path, HWND owner, REFIID iid,
                           void** result) noexcept;

} // namespace transfer
