#include "transfer/drop_transfer.h"

#include "com/clipboard_formats.h"
#include "com/media.h"
#include "shell_items/change_notice.h"
#include "transfer/copy_items.h"
#include "transfer/descriptor_items/filedescriptor_wrapper.h"
#include "transfer/format_values.h"
#include "transfer/local_items/hdrop_wrapper.h"
#include "transfer/progress_dialog.h"

#include <shlobj.h>

namespace transfer {

namespace {

using com::registered_formats;

com::medium get_block(IDataObject& data, UINT format) {
    FORMATETC request = format_of(format);
    com::medium block;
    if (FAILED(data.GetData(&request, block.put()))) {
        block.release();
    }
    return block;
}

HRESULT copy(const std::shared_ptr<CClipboardWrapper>& source, bool internal,
             const drop_order& order) {
    CProgressDialog progress(order.owner);
    ui::message_prompt prompt(order.owner, progress.get());
    return CItemsCopy({.source = source,
                       .destination = order.directory,
                       .destination_path = order.list.path_string(),
                       .move = order.effect == DROPEFFECT_MOVE,
                       .internal = internal,
                       .take_refusals =
                           [&source] {
                               return source->take_refusals();
                           }},
                      progress, prompt)
        .run();
}

/// Virtual files are preferred to paths: they alone can be items of this drive.
HRESULT transfer(IDataObject& data, const drop_order& order, bool& internal) {
    internal = false;
    // A wrapper goes before the block that it reads.
    if (const com::medium block = get_block(data, registered_formats.file_group_descriptor)) {
        internal = read_value(data, registered_formats.quilldeck_data_object) != 0;
        return copy(std::make_shared<CFILEDESCRIPTORWrapper>(&data, block.get().hGlobal), internal,
                    order);
    }
    if (const com::medium block = get_block(data, CF_HDROP)) {
        return copy(std::make_shared<CHDROPWrapper>(block.get().hGlobal), false, order);
    }
    return E_INVALIDARG;
}

} // namespace

drop_outcome carry_out_drop(IDataObject& data, const drop_order& order) {
    bool internal = false;
    drop_outcome outcome;
    try {
        outcome.status = transfer(data, order, internal);
    } catch (...) {
        outcome.status = com::status_of_current_exception();
        outcome.failure = std::current_exception();
    }
    // The store has moved items of its own itself: their source has nothing left to delete.
    outcome.effect = outcome.status == S_OK && !internal ? order.effect : DROPEFFECT_NONE;
    // Not every source wants to know.
    write_value(data, registered_formats.performed_drop_effect, outcome.effect);
    write_value(data, registered_formats.paste_succeeded, outcome.effect);
    shell::notify_change(SHCNE_UPDATEDIR, order.list);
    return outcome;
}

} // namespace transfer
