#include "commands/explorer_command.h"

#include "com/memory.h"

#include <utility>

namespace commands {

namespace {

HRESULT give(const std::wstring& text, LPWSTR* result) {
    com::cleared(result);
    *result = com::duplicate_string(text).release();
    return S_OK;
}

} // namespace

CExplorerCommandImpl::CExplorerCommandImpl(command_description description)
    : m_description(std::move(description)) {}

command_description CExplorerCommandImpl::describe(IShellItemArray*) {
    return m_description;
}

HRESULT CExplorerCommandImpl::GetTitle(IShellItemArray* psiItemArray, LPWSTR* ppszName) {
    return com::guard([&] { return give(describe(psiItemArray).title, ppszName); });
}

HRESULT CExplorerCommandImpl::GetIcon(IShellItemArray* psiItemArray, LPWSTR* ppszIcon) {
    return com::guard([&] {
        const std::wstring icon = describe(psiItemArray).icon;
        com::cleared(ppszIcon);
        return icon.empty() ? E_FAIL : give(icon, ppszIcon);
    });
}

HRESULT CExplorerCommandImpl::GetToolTip(IShellItemArray* psiItemArray, LPWSTR* ppszInfotip) {
    return com::guard([&] { return give(describe(psiItemArray).tool_tip, ppszInfotip); });
}

HRESULT CExplorerCommandImpl::GetCanonicalName(GUID* pguidCommandName) {
    return com::guard([&] { com::cleared(pguidCommandName) = m_description.canonical_name; });
}

HRESULT CExplorerCommandImpl::GetState(IShellItemArray* psiItemArray, WINBOOL,
                                       EXPCMDSTATE* pCmdState) {
    return com::guard([&] {
        com::required(pCmdState) = ECS_HIDDEN;
        if (is_offered(psiItemArray)) {
            *pCmdState = ECS_ENABLED;
        }
    });
}

HRESULT CExplorerCommandImpl::Invoke(IShellItemArray* psiItemArray, IBindCtx*) {
    return com::guard([&] { invoke(psiItemArray); });
}

HRESULT CExplorerCommandImpl::GetFlags(EXPCMDFLAGS* pFlags) {
    return com::guard([&] { com::required(pFlags) = m_description.flags; });
}

HRESULT CExplorerCommandImpl::EnumSubCommands(IEnumExplorerCommand** ppEnum) {
    return com::guard([&] {
        com::cleared(ppEnum);
        return E_NOTIMPL;
    });
}

} // namespace commands
