#pragma once

#include "com/object.h"

#include <shobjidl.h>
#include <wrl/client.h>

namespace commands {

/// The commands of a folder's toolbar.
class CExplorerCommandProviderImpl final
    : public com::object<CExplorerCommandProviderImpl, IExplorerCommandProvider> {
public:
    /// `folder` is a folder of the drive.
    explicit CExplorerCommandProviderImpl(Microsoft::WRL::ComPtr<IShellFolder> folder);

    /// Connects the folder, in silence; E_FAIL when that fails. E_NOINTERFACE for anything but
    /// an enumerator of commands. A command whose window this build does not have is left out.
    HRESULT STDMETHODCALLTYPE GetCommands(IUnknown* punkSite, REFIID riid, void** ppv) override;
    HRESULT STDMETHODCALLTYPE GetCommand(REFGUID rguidCommandId, REFIID riid, void** ppv) override;

private:
    const Microsoft::WRL::ComPtr<IShellFolder> m_folder;
};

} // namespace commands
