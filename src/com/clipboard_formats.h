#pragma once

#include <windows.h>

namespace com {

/// The numbers under which this session knows the formats of data objects by name. They are
/// registered in this order.
struct clipboard_formats {
    clipboard_formats() noexcept;

    UINT file_group_descriptor;
    UINT file_contents;
    UINT paste_succeeded;
    UINT logical_performed_drop_effect;
    UINT performed_drop_effect;
    UINT preferred_drop_effect;
    UINT shell_id_list_array;
    UINT ole_clipboard_persist_on_flush;
    UINT quilldeck_data_object;
    UINT target_class_id;
};

/// Those of this module, made when it loads.
extern const clipboard_formats registered_formats;

} // namespace com
