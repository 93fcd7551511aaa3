#pragma once

#include "com/guard.h"
#include "com/object.h"

#include <shobjidl.h>

#include <string>

namespace commands {

/// What a command of the toolbar is called and looks like.
struct command_description {
    GUID canonical_name;
    std::wstring title;
    std::wstring tool_tip;
    std::wstring icon; ///< a resource or a file name, with "," and an index
    EXPCMDFLAGS flags = ECF_DEFAULT;
};

/// A command of the folder's toolbar. It is asked on the shell's thread and does nothing slow
/// there.
class CExplorerCommandImpl : public com::object<CExplorerCommandImpl, IExplorerCommand> {
public:
    explicit CExplorerCommandImpl(command_description description);

    HRESULT STDMETHODCALLTYPE GetTitle(IShellItemArray* psiItemArray, LPWSTR* ppszName) override;
    /// E_FAIL without an icon.
    HRESULT STDMETHODCALLTYPE GetIcon(IShellItemArray* psiItemArray, LPWSTR* ppszIcon) override;
    HRESULT STDMETHODCALLTYPE GetToolTip(IShellItemArray* psiItemArray,
                                         LPWSTR* ppszInfotip) override;
    HRESULT STDMETHODCALLTYPE GetCanonicalName(GUID* pguidCommandName) override;
    HRESULT STDMETHODCALLTYPE GetState(IShellItemArray* psiItemArray, WINBOOL fOkToBeSlow,
                                       EXPCMDSTATE* pCmdState) override;
    HRESULT STDMETHODCALLTYPE Invoke(IShellItemArray* psiItemArray, IBindCtx* pbc) override;
    HRESULT STDMETHODCALLTYPE GetFlags(EXPCMDFLAGS* pFlags) override;
    /// E_NOTIMPL, but for commands with others below them.
    HRESULT STDMETHODCALLTYPE EnumSubCommands(IEnumExplorerCommand** ppEnum) override;

protected:
    const command_description& description() const noexcept { return m_description; }

    /// The description for a selection; a command may have another one for each. Throws when it
    /// has none.
    virtual command_description describe(IShellItemArray* items);
    /// Whether the command is there for a selection; null is none. Asks no network.
    virtual bool is_offered(IShellItemArray* items) = 0;
    /// Carries the command out.
    virtual void invoke(IShellItemArray* items) = 0;

private:
    const command_description m_description;
};

/// The line between commands of a menu.
class CExplorerCommandSeparator final : public CExplorerCommandImpl {
public:
    explicit CExplorerCommandSeparator(const GUID& canonical_name)
        : CExplorerCommandImpl({canonical_name, {}, {}, {}, ECF_ISSEPARATOR}) {}

    HRESULT STDMETHODCALLTYPE GetTitle(IShellItemArray*, LPWSTR*) override { return E_NOTIMPL; }

    HRESULT STDMETHODCALLTYPE GetIcon(IShellItemArray*, LPWSTR*) override { return E_NOTIMPL; }

    HRESULT STDMETHODCALLTYPE GetToolTip(IShellItemArray*, LPWSTR*) override { return E_NOTIMPL; }

protected:
    bool is_offered(IShellItemArray*) override { return true; }

    void invoke(IShellItemArray*) override {}
};

} // namespace commands
