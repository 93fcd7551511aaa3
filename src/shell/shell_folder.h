#pragma once

#include "com/object.h"
#include "com/sited.h"
#include "shell_items/item_id_list.h"
#include "shell_items/shell_folder_interface.h"
#include "utils/named_mutex.h"
#include "vfs/client.h"
#include "vfs/directory.h"

#include <shlobj.h>

#include <list>
#include <memory>
#include <span>
#include <string>
#include <vector>

namespace shell {

/// One folder of the drive as the shell sees it: the drive itself, or any directory below it. It
/// belongs to the thread that made it. The shell makes one for nearly every question, so that
/// making one costs next to nothing; what concerns the store waits until it is needed. Only
/// `EnumObjects` asks the user to sign in.
class CShellFolderImpl final
    : public com::object<CShellFolderImpl, IShellFolderImpl,
                         com::chain<IShellFolder2, IShellFolder>,
                         com::chain<IPersistFolder3, IPersist, IPersistFolder, IPersistFolder2>,
                         ITransferDestination, IStorage, com::sited> {
public:
    /// The drive, to be placed by `Initialize`.
    CShellFolderImpl();
    /// The folder `item`, reached by `path` from the namespace root, whose absolute list `root` is.
    CShellFolderImpl(CItemIDList root, CItemIDList path, vfs::item_ptr item);
    ~CShellFolderImpl() noexcept override;

    // IShellFolderImpl
    HRESULT STDMETHODCALLTYPE GetObject(HWND hWnd, VARIANT* ppObject) override;

    // IShellFolder
    HRESULT STDMETHODCALLTYPE ParseDisplayName(HWND owner, IBindCtx* context, LPWSTR text,
                                               ULONG* eaten, PIDLIST_RELATIVE* result,
                                               ULONG* attributes) override;
    HRESULT STDMETHODCALLTYPE EnumObjects(HWND owner, SHCONTF flags, IEnumIDList** result) override;
    HRESULT STDMETHODCALLTYPE BindToObject(PCUIDLIST_RELATIVE list, IBindCtx* context, REFIID iid,
                                           void** result) override;
    HRESULT STDMETHODCALLTYPE BindToStorage(PCUIDLIST_RELATIVE list, IBindCtx* context, REFIID iid,
                                            void** result) override;
    HRESULT STDMETHODCALLTYPE CompareIDs(LPARAM column, PCUIDLIST_RELATIVE left,
                                         PCUIDLIST_RELATIVE right) override;
    HRESULT STDMETHODCALLTYPE CreateViewObject(HWND owner, REFIID iid, void** result) override;
    HRESULT STDMETHODCALLTYPE GetAttributesOf(UINT count, PCUITEMID_CHILD_ARRAY lists,
                                              SFGAOF* flags) override;
    HRESULT STDMETHODCALLTYPE GetUIObjectOf(HWND owner, UINT count, PCUITEMID_CHILD_ARRAY lists,
                                            REFIID iid, UINT* reserved, void** result) override;
    HRESULT STDMETHODCALLTYPE GetDisplayNameOf(PCUITEMID_CHILD list, SHGDNF flags,
                                               STRRET* result) override;
    HRESULT STDMETHODCALLTYPE SetNameOf(HWND owner, PCUITEMID_CHILD list, LPCWSTR name,
                                        SHGDNF flags, PITEMID_CHILD* result) override;

    // IShellFolder2
    HRESULT STDMETHODCALLTYPE GetDefaultSearchGUID(GUID* result) override;
    HRESULT STDMETHODCALLTYPE EnumSearches(IEnumExtraSearch** result) override;
    HRESULT STDMETHODCALLTYPE GetDefaultColumn(DWORD reserved, ULONG* sort,
                                               ULONG* display) override;
    HRESULT STDMETHODCALLTYPE GetDefaultColumnState(UINT index, SHCOLSTATEF* state) override;
    HRESULT STDMETHODCALLTYPE GetDetailsEx(PCUITEMID_CHILD list, const SHCOLUMNID* key,
                                           VARIANT* value) override;
    HRESULT STDMETHODCALLTYPE GetDetailsOf(PCUITEMID_CHILD list, UINT index,
                                           SHELLDETAILS* details) override;
    HRESULT STDMETHODCALLTYPE MapColumnToSCID(UINT index, SHCOLUMNID* key) override;

    // IPersist to IPersistFolder3
    HRESULT STDMETHODCALLTYPE GetClassID(CLSID* result) override;
    HRESULT STDMETHODCALLTYPE Initialize(PCIDLIST_ABSOLUTE list) override;
    HRESULT STDMETHODCALLTYPE GetCurFolder(PIDLIST_ABSOLUTE* result) override;
    HRESULT STDMETHODCALLTYPE InitializeEx(IBindCtx* context, PCIDLIST_ABSOLUTE list,
                                           const PERSIST_FOLDER_TARGET_INFO* target) override;
    HRESULT STDMETHODCALLTYPE GetFolderTargetInfo(PERSIST_FOLDER_TARGET_INFO* result) override;

    // ITransferDestination: it is there for hosts that ask whether it is, and does nothing.
    HRESULT STDMETHODCALLTYPE Advise(ITransferAdviseSink*, DWORD*) override { return E_NOTIMPL; }

    HRESULT STDMETHODCALLTYPE Unadvise(DWORD) override { return E_NOTIMPL; }

    HRESULT STDMETHODCALLTYPE CreateItem(LPCWSTR, DWORD, ULONGLONG, TRANSFER_SOURCE_FLAGS, REFIID,
                                         void**, REFIID, void**) override {
        return E_NOTIMPL;
    }

    // IStorage: the road by which a host writes a new file.
    HRESULT STDMETHODCALLTYPE CreateStream(const OLECHAR* name, DWORD mode, DWORD reserved1,
                                           DWORD reserved2, IStream** result) override;

    HRESULT STDMETHODCALLTYPE OpenStream(const OLECHAR*, void*, DWORD, DWORD, IStream**) override {
        return E_NOTIMPL;
    }

    HRESULT STDMETHODCALLTYPE CreateStorage(const OLECHAR*, DWORD, DWORD, DWORD,
                                            IStorage**) override {
        return E_NOTIMPL;
    }

    HRESULT STDMETHODCALLTYPE OpenStorage(const OLECHAR*, IStorage*, DWORD, SNB, DWORD,
                                          IStorage**) override {
        return E_NOTIMPL;
    }

    HRESULT STDMETHODCALLTYPE CopyTo(DWORD, const IID*, SNB, IStorage*) override {
        return E_NOTIMPL;
    }

    HRESULT STDMETHODCALLTYPE MoveElementTo(const OLECHAR*, IStorage*, const OLECHAR*,
                                            DWORD) override {
        return E_NOTIMPL;
    }

    HRESULT STDMETHODCALLTYPE Commit(DWORD) override { return E_NOTIMPL; }

    HRESULT STDMETHODCALLTYPE Revert() override { return E_NOTIMPL; }

    HRESULT STDMETHODCALLTYPE EnumElements(DWORD, void*, DWORD, IEnumSTATSTG**) override {
        return E_NOTIMPL;
    }

    HRESULT STDMETHODCALLTYPE DestroyElement(const OLECHAR*) override { return E_NOTIMPL; }

    HRESULT STDMETHODCALLTYPE RenameElement(const OLECHAR*, const OLECHAR*) override {
        return E_NOTIMPL;
    }

    HRESULT STDMETHODCALLTYPE SetElementTimes(const OLECHAR*, const FILETIME*, const FILETIME*,
                                              const FILETIME*) override {
        return E_NOTIMPL;
    }

    HRESULT STDMETHODCALLTYPE SetClass(REFCLSID) override { return E_NOTIMPL; }

    HRESULT STDMETHODCALLTYPE SetStateBits(DWORD, DWORD) override { return E_NOTIMPL; }

    HRESULT STDMETHODCALLTYPE Stat(STATSTG*, DWORD) override { return E_NOTIMPL; }

private:
    /// The gate before all that needs the store: takes the session's client, unless that was done
    /// before, and its root where no item is set. Without `quiet` a user who has not signed in is
    /// asked to; with it nobody is waited for. Failures are shown on top of `owner` and give
    /// E_FAIL.
    HRESULT ensure_connected(HWND owner, bool quiet) noexcept;
    std::shared_ptr<vfs::directory> get_directory() const;
    /// Nothing in the Trash can be entered.
    bool is_deleted() const;
    com::unique_id_list get_absolute_list() const;
    std::vector<PIDLDATA> list_items(vfs::directory& directory,
                                     const std::vector<vfs::item_ptr>& items, SHCONTF flags);

    HRESULT open_stream(const vfs::item_ptr& item, REFIID iid, void** result) const;

    // What `CreateViewObject` makes of the folder itself.
    HRESULT create_view(HWND owner, REFIID iid, void** result);
    HRESULT create_destination(HWND owner, REFIID iid, void** result);
    HRESULT create_own_stream(HWND owner, REFIID iid, void** result);
    HRESULT create_own_image(HWND owner, REFIID iid, void** result);
    HRESULT create_drop_target(HWND owner, REFIID iid, void** result);
    HRESULT create_background_menu(HWND owner, REFIID iid, void** result);
    HRESULT create_command_provider(HWND owner, REFIID iid, void** result);

    // What `GetUIObjectOf` makes of its items.
    using item_lists = std::span<const PCUITEMID_CHILD>;
    HRESULT create_icon(HWND owner, item_lists items, REFIID iid, void** result);
    HRESULT create_image(HWND owner, item_lists items, REFIID iid, void** result);
    HRESULT create_data_object(HWND owner, item_lists items, REFIID iid, void** result);
    HRESULT create_drop_source(HWND owner, item_lists items, REFIID iid, void** result);
    HRESULT create_item_drop_target(HWND owner, item_lists items, REFIID iid, void** result);
    HRESULT create_item_menu(HWND owner, item_lists items, REFIID iid, void** result);

    std::wstring get_display_name(const CItemIDList& list, SHGDNF flags) const;
    /// `m_path` with a separator behind it; nothing for the drive itself.
    std::wstring get_path_prefix() const;
    /// The same as a part of a local path. Throws for a name that no local folder can have.
    std::wstring get_local_path_prefix() const;
    /// How the shell names the drive, with a separator.
    std::wstring get_root_prefix(SHGDNF flags) const;
    std::wstring get_user_name() const;
    /// The path at which hosts other than the file manager look for an item. Makes the folders that
    /// lead there.
    std::wstring get_local_path(const CItemIDList& list) const;
    /// What an absolute path begins with. Makes no folder.
    std::vector<std::wstring> get_prefixes() const;
    CItemIDList parse(IBindCtx* context, std::wstring text, ULONG& eaten);
    /// A record for a file that a save dialog is about to make behind `list`.
    void append_new_file(CItemIDList& list, const std::wstring& name) const;

    CItemIDList m_root; ///< the absolute list of the drive, as `head`
    CItemIDList m_path; ///< from the drive down to this folder
    vfs::client_ptr m_client;
    vfs::item_ptr m_item;
    /// What each enumerator walks; as those refer to them, none goes before the folder does.
    std::list<std::vector<PIDLDATA>> m_enumerations;
    utils::named_mutex m_login_mutex;
};

} // namespace shell
