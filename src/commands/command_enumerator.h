#pragma once

#include "com/object.h"

#include <shobjidl.h>
#include <wrl/client.h>

#include <vector>

namespace commands {

using command_list = std::vector<Microsoft::WRL::ComPtr<IExplorerCommand>>;

/// Commands in their order.
class CEnumExplorerCommandImpl final
    : public com::object<CEnumExplorerCommandImpl, IEnumExplorerCommand> {
public:
    explicit CEnumExplorerCommandImpl(command_list commands) : m_commands(std::move(commands)) {}

    /// E_INVALIDARG without an array, E_POINTER without a count for more than one.
    HRESULT STDMETHODCALLTYPE Next(ULONG celt, IExplorerCommand** pUICommand,
                                   ULONG* pceltFetched) override;
    HRESULT STDMETHODCALLTYPE Skip(ULONG celt) override;
    HRESULT STDMETHODCALLTYPE Reset() override;
    HRESULT STDMETHODCALLTYPE Clone(IEnumExplorerCommand** ppenum) override;

private:
    const command_list m_commands;
    std::size_t m_position = 0;
};

} // namespace commands
