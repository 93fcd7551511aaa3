#pragma once

#include "com/memory.h"
#include "com/object.h"

#include <shlobj.h>

// The platform's header leaves this out.
__CRT_UUID_DECL(IShellFolderViewCB, 0x2047e320, 0xf2a9, 0x11ce, 0xae, 0x65, 0x08, 0x00, 0x2b, 0x2e,
                0x12, 0x62)

namespace shell {

/// What the platform's default view asks of a folder.
class CShellFolderViewCBImpl final
    : public com::object<CShellFolderViewCBImpl, IShellFolderViewCB> {
public:
    /// `folder` is the absolute list of the folder.
    explicit CShellFolderViewCBImpl(com::unique_id_list folder) noexcept
        : m_folder(std::move(folder)) {}

    HRESULT STDMETHODCALLTYPE MessageSFVCB(UINT message, WPARAM wparam,
                                           LPARAM lparam) noexcept override;

private:
    com::unique_id_list m_folder;
};

} // namespace shell
