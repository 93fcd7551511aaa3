#pragma once

#include "com/object.h"
#include "shell_items/item_id_list.h"
#include "transfer/data_object/descriptors.h"
#include "transfer/data_object/stored_formats.h"
#include "transfer/data_object_interface.h"
#include "transfer/selection.h"

#include <objidl.h>

#include <span>

namespace transfer {

/// A selection of items on its way out of the drive: what the clipboard and a drag carry. Other
/// programs read it as a table of virtual files with a stream for each, the shell as a list of
/// lists; what they write back completes a move or a deletion. It belongs to the thread that made
/// it. Neither making it nor listing its formats asks the store for anything.
///
/// What was stored is lent and not copied: a medium that is handed out holds a reference on the
/// object.
class CDataObjectImpl final
    : public com::object<CDataObjectImpl, com::chain<IPersistStream, IPersist>, IDataObjectImpl,
                         IDataObject> {
public:
    /// The children `items` of `folder`, which `path` leads to from the drive, whose absolute list
    /// `root` is. `owner` is the parent of what is asked on the way. To be called once, by who made
    /// the object, unless that calls `Load`. E_INVALIDARG without items, and for lists that are not
    /// the drive's.
    HRESULT Init(const std::shared_ptr<vfs::directory>& folder, const shell::CItemIDList& root,
                 const shell::CItemIDList& path, HWND owner,
                 std::span<const PCUITEMID_CHILD> items) noexcept;

    /// Without a folder before `Init` and `Load`.
    const selection& get_selection() const noexcept { return m_selection; }

    // IDataObjectImpl
    HRESULT STDMETHODCALLTYPE GetPath(PIDLIST_ABSOLUTE* pidlRoot, PIDLIST_RELATIVE* pidl) override;

    // IDataObject
    HRESULT STDMETHODCALLTYPE GetData(FORMATETC* format, STGMEDIUM* medium) override;
    HRESULT STDMETHODCALLTYPE GetDataHere(FORMATETC* format, STGMEDIUM* medium) override;
    /// Does not own up to the list of lists, so that who only asks takes the virtual files.
    HRESULT STDMETHODCALLTYPE QueryGetData(FORMATETC* format) override;
    HRESULT STDMETHODCALLTYPE GetCanonicalFormatEtc(FORMATETC* format, FORMATETC* result) override;
    HRESULT STDMETHODCALLTYPE SetData(FORMATETC* format, STGMEDIUM* medium, BOOL release) override;
    HRESULT STDMETHODCALLTYPE EnumFormatEtc(DWORD direction, IEnumFORMATETC** result) override;
    HRESULT STDMETHODCALLTYPE DAdvise(FORMATETC* format, DWORD flags, IAdviseSink* sink,
                                      DWORD* connection) override;
    HRESULT STDMETHODCALLTYPE DUnadvise(DWORD connection) override;
    HRESULT STDMETHODCALLTYPE EnumDAdvise(IEnumSTATDATA** result) override;

    // IPersistStream
    HRESULT STDMETHODCALLTYPE GetClassID(CLSID* result) override;
    HRESULT STDMETHODCALLTYPE IsDirty() override;
    /// Brings back what `Save` wrote, in any process whose user is signed in. Asks the store for
    /// the folder where that is not known yet. On a failure nothing changes.
    HRESULT STDMETHODCALLTYPE Load(IStream* stream) override;
    HRESULT STDMETHODCALLTYPE Save(IStream* stream, BOOL clear_dirty) override;
    HRESULT STDMETHODCALLTYPE GetSizeMax(ULARGE_INTEGER* size) override;

private:
    /// The rows of formats that are made on demand, each as a medium for the caller.
    struct format_row {
        UINT format;
        DWORD kind; ///< the medium that the request must allow
        STGMEDIUM (CDataObjectImpl::*make)(const FORMATETC& request);
    };

    static std::span<const format_row> format_rows();

    STGMEDIUM make_mark(const FORMATETC& request);
    STGMEDIUM make_descriptors(const FORMATETC& request);
    STGMEDIUM make_contents(const FORMATETC& request);
    STGMEDIUM make_lists(const FORMATETC& request);
    void build_descriptors();

    HRESULT init(const std::shared_ptr<vfs::directory>& folder, const shell::CItemIDList& root,
                 const shell::CItemIDList& path, HWND owner, std::vector<shell::PIDLDATA> records);
    void take(const FORMATETC& format, const STGMEDIUM& medium, bool given);
    bool is_self(IUnknown* other);
    void answer_write(const FORMATETC& format, bool is_for_recycle_bin);
    bool must_source_go();
    void delete_items(bool force) const;
    void notify() const;

    HWND m_owner = nullptr;
    shell::CItemIDList m_root;
    shell::CItemIDList m_path;
    selection m_selection; ///< its list is that of both together
    CDescriptors m_descriptors;
    CStoredFormats m_formats;
};

/// A data object for children of `directory`, a `vfs::directory`, queried for `iid`; arguments as
/// those of `Init`. E_FAIL for an item that is no directory.
HRESULT create_data_object(const vfs::item_ptr& directory, const shell::CItemIDList& root,
                           const shell::CItemIDList& path, HWND owner,
                           std::span<const PCUITEMID_CHILD> items, REFIID iid,
                           void** result) noexcept;

} // namespace transfer
