#pragma once

#include "transfer/copy_file.h"
#include "vfs/directory.h"

#include <windows.h>

#include <functional>
#include <memory>
#include <string>

namespace transfer {

/// What a transfer is to do.
struct copy_order {
    std::shared_ptr<vfs::directory> source; ///< its children are copied
    std::shared_ptr<vfs::directory> destination;
    std::wstring destination_path; ///< as the user is to read it, without the drive
    bool move = false;
    bool internal = false; ///< the source's files are the store's own
    /// What the source offers and no store can take, as lines for the user; empty for nothing.
    /// Asked when all of the source has been seen.
    std::function<std::wstring()> take_refusals = [] {
        return std::wstring();
    };
};

/// Copies the items of a selection, one after another, with all that lies below them. It speaks to
/// the user through a progress sink and a prompt alone, and lives on one thread. Where an item
/// cannot be copied the user decides; whatever the decision was, what did not arrive counts as a
/// failure, so that nobody deletes its original.
class CItemsCopy {
public:
    CItemsCopy(copy_order order, IProgressSink& progress, ui::prompt& prompt);

    /// S_OK when everything has arrived, E_FAIL when something has not, E_ABORT when the transfer
    /// was ended before its time.
    HRESULT run();

private:
    /// Adds up what the source holds. S_OK to go on.
    HRESULT _DoMeasure();
    HRESULT measure(vfs::directory& directory);
    /// Lists the destination, which fills the cache in which names are looked up. False when the
    /// user has enough of it.
    bool refresh_destination();
    bool show_refusals();

    HRESULT _DoCopyChildren(vfs::directory& source,
                            const std::shared_ptr<vfs::directory>& destination);
    HRESULT copy_child(const vfs::item_ptr& child,
                       const std::shared_ptr<vfs::directory>& destination);
    /// S_OK with the directory of that name in `parent`, made if need be.
    HRESULT open_directory(const std::wstring& name, vfs::directory& parent,
                           std::shared_ptr<vfs::directory>& opened);
    HRESULT merge_with(const std::wstring& name, const vfs::item_ptr& found,
                       std::shared_ptr<vfs::directory>& opened);

    const copy_order m_order;
    copy_context m_context;
    int m_files = 0;
};

} // namespace transfer
