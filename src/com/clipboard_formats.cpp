#include "com/clipboard_formats.h"

namespace com {

const clipboard_formats registered_formats;

// Members are made in the order in which the class declares them.
clipboard_formats::clipboard_formats() noexcept
    : file_group_descriptor(::RegisterClipboardFormatW(L"FileGroupDescriptorW")),
      file_contents(::RegisterClipboardFormatW(L"FileContents")),
      paste_succeeded(::RegisterClipboardFormatW(L"Paste Succeeded")),
      logical_performed_drop_effect(::RegisterClipboardFormatW(L"Logical Performed DropEffect")),
      performed_drop_effect(::RegisterClipboardFormatW(L"Performed DropEffect")),
      preferred_drop_effect(::RegisterClipboardFormatW(L"Preferred DropEffect")),
      shell_id_list_array(::RegisterClipboardFormatW(L"Shell IDList Array")),
      ole_clipboard_persist_on_flush(::RegisterClipboardFormatW(L"OleClipboardPersistOnFlush")),
      quilldeck_data_object(::RegisterClipboardFormatW(L"Quilldeck_DataObject")),
      target_class_id(::RegisterClipboardFormatW(L"TargetCLSID")) {}

} // namespace com
