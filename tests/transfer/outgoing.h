#pragma once

#include "../shell/signed_in.h"
#include "../vfs_quilldeck/transfer/content.h"
#include "taken_files.h"

#include "com/clipboard_formats.h"
#include "com/media.h"
#include "transfer/data_object_interface.h"
#include "transfer/format_values.h"

#include <shlobj.h>

#include <memory>
#include <string>
#include <vector>

namespace transfer {

using com::registered_formats;
using Microsoft::WRL::ComPtr;
using transfer_test::content;
using transfer_test::take_files;
using transfer_test::told_of;

/// Lets the layers reach each other, as the module does it.
void join_layers();

/// A data object needs OLE for the clipboard.
class ole {
public:
    ole() { com::check(::OleInitialize(nullptr)); }

    ~ole() { ::OleUninitialize(); }

    ole(const ole&) = delete;
    ole& operator=(const ole&) = delete;
};

/// A test of what leaves the folder `folder` of the drive, which holds the folder "tree" with "a",
/// "empty" and "sub", with "b" in that, and the file "file". Nothing is left of it.
class outgoing : public shell::signed_in {
protected:
    outgoing();
    ~outgoing() override;

    void store(vfs::directory& where, const std::wstring& name, const content& data);
    /// A data object for children, from the folder itself.
    ComPtr<IDataObject> make(const std::vector<std::wstring>& names, HWND owner = nullptr);
    shell::CItemIDList path_of(const std::wstring& name);
    /// The actions that the store was asked for since the last call.
    std::string asked();
    /// The status of a request, whose answer is dropped.
    static HRESULT get(IDataObject& source, const FORMATETC& format);
    static com::medium get_block(IDataObject& source, UINT format);

    ole initialized;
    std::wstring name;
    std::shared_ptr<vfs::directory> folder;
    ComPtr<IShellFolder2> place; ///< the folder as the shell sees it
    const content small = transfer_test::make_content(5, 1);
    const content large = transfer_test::make_content(300'001, 2);
    /// What `take_files` tells of "tree" and "file".
    std::string all_told;
};

} // namespace transfer
