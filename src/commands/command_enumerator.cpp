#include "commands/command_enumerator.h"

#include <algorithm>

namespace commands {

HRESULT CEnumExplorerCommandImpl::Next(ULONG celt, IExplorerCommand** pUICommand,
                                       ULONG* pceltFetched) {
    if (!pUICommand) {
        return E_INVALIDARG;
    }
    if (!pceltFetched && celt > 1) {
        return E_POINTER;
    }
    const auto given =
        static_cast<ULONG>(std::min<std::size_t>(celt, m_commands.size() - m_position));
    for (ULONG index = 0; index < given; ++index) {
        m_commands[m_position++].CopyTo(&pUICommand[index]);
    }
    if (pceltFetched) {
        *pceltFetched = given;
    }
    return given == celt ? S_OK : S_FALSE;
}

HRESULT CEnumExplorerCommandImpl::Skip(ULONG) {
    return E_NOTIMPL;
}

HRESULT CEnumExplorerCommandImpl::Reset() {
    m_position = 0;
    return S_OK;
}

HRESULT CEnumExplorerCommandImpl::Clone(IEnumExplorerCommand** ppenum) {
    if (ppenum) {
        *ppenum = nullptr;
    }
    return E_NOTIMPL;
}

} // namespace commands
