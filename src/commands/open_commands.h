#pragma once

#include "commands/association_list.h"
#include "commands/explorer_command.h"

#include <memory>

namespace commands {

/// "Open", with the default program of the selection as its text and picture, and the other
/// programs below it when one item is selected.
class CExplorerCommandOpen final : public CExplorerCommandImpl {
public:
    explicit CExplorerCommandOpen(Microsoft::WRL::ComPtr<IShellFolder> folder);

    HRESULT STDMETHODCALLTYPE EnumSubCommands(IEnumExplorerCommand** ppEnum) override;

protected:
    command_description describe(IShellItemArray* items) override;
    bool is_offered(IShellItemArray* items) override;
    void invoke(IShellItemArray* items) override;

private:
    /// The list for a selection that the command can open. Throws E_FAIL for any other.
    const AssociationList& checked(IShellItemArray* items);

    const Microsoft::WRL::ComPtr<IShellFolder> m_folder;
    AssociationList m_associations;
};

/// One program below "Open"; without one, "Choose Default Program...".
class CExplorerCommandOpenWith final : public CExplorerCommandImpl {
public:
    /// `key` is the program's class, null to let the user choose.
    CExplorerCommandOpenWith(command_description description,
                             Microsoft::WRL::ComPtr<IShellFolder> folder,
                             utils::unique_registry_key key);

protected:
    bool is_offered(IShellItemArray*) override { return true; }

    void invoke(IShellItemArray* items) override;

private:
    const Microsoft::WRL::ComPtr<IShellFolder> m_folder;
    const utils::unique_registry_key m_key;
};

} // namespace commands
