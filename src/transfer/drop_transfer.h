#pragma once

#include "shell_items/item_id_list.h"
#include "vfs/directory.h"

#include <objidl.h>

#include <exception>
#include <memory>

namespace transfer {

/// A drop that was accepted, as a worker gets it: nothing in it belongs to an apartment.
struct drop_order {
    HWND owner = nullptr;    ///< on top of which windows are shown
    DWORD effect = 0;        ///< DROPEFFECT_COPY or DROPEFFECT_MOVE
    shell::CItemIDList list; ///< the destination's absolute list
    std::shared_ptr<vfs::directory> directory;
};

/// How a drop ended.
struct drop_outcome {
    HRESULT status = E_FAIL;    ///< S_OK when everything arrived
    DWORD effect = 0;           ///< what the source was told; 0 to a source of this program
    std::exception_ptr failure; ///< what it was that ended it, if it was no status
};

/// Carries the drop out on the calling thread, under a progress dialog, and tells the source and
/// the shell how it ended. `data` belongs to the apartment of that thread.
drop_outcome carry_out_drop(IDataObject& data, const drop_order& order);

/// Whether the source wants to be read by another thread while its own goes on.
bool wants_async(IDataObject& data) noexcept;

/// Hands the drop over to a thread of its own. S_OK when that was started, E_FAIL when it was not,
/// or the failure to marshal `data`.
HRESULT start_drop_thread(IDataObject& data, const drop_order& order) noexcept;

} // namespace transfer
