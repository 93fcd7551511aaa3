#include "commands/open_commands.h"

#include "commands/command_enumerator.h"
#include "commands/item_array.h"
#include "shell_items/seams.h"

#include <utility>

namespace commands {

namespace {

using Microsoft::WRL::ComPtr;

constexpr GUID open_name = {
    0x9471efbe, 0x09b2, 0x47da, {0x84, 0x1b, 0x85, 0xdd, 0x11, 0xbe, 0x6f, 0xd9}};

void open(IShellItemArray* items, IShellFolder& folder, HKEY key, bool ask) {
    const ComPtr<IDataObject> object = data_object_of(com::required(items), folder);
    com::check(shell::get_seams().transfer.open(*object.Get(), GetDesktopWindow(), key, ask));
}

/// The names of the commands below "Open" follow its own.
GUID next_name(GUID& name) {
    ++name.Data1;
    return name;
}

} // namespace

CExplorerCommandOpen::CExplorerCommandOpen(ComPtr<IShellFolder> folder)
    : CExplorerCommandImpl({open_name, {}, {}, {}, ECF_HASSUBCOMMANDS | ECF_HASSPLITBUTTON}),
      m_folder(std::move(folder)) {}

const AssociationList& CExplorerCommandOpen::checked(IShellItemArray* items) {
    if (!m_associations.check_selection(items)) {
        throw com::status_exception(E_FAIL);
    }
    return m_associations;
}

command_description CExplorerCommandOpen::describe(IShellItemArray* items) {
    const Association& program = *checked(items).default_program();
    command_description described = description();
    described.title = program.title;
    described.tool_tip = program.title;
    described.icon = program.icon;
    return described;
}

bool CExplorerCommandOpen::is_offered(IShellItemArray* items) {
    return m_associations.check_selection(items);
}

void CExplorerCommandOpen::invoke(IShellItemArray* items) {
    open(items, *m_folder.Get(), checked(items).default_program()->key.get(), false);
}

HRESULT CExplorerCommandOpen::EnumSubCommands(IEnumExplorerCommand** ppEnum) {
    return com::guard([&] {
        com::cleared(ppEnum);
        if (m_associations.item_count() != 1) {
            return E_NOTIMPL;
        }
        GUID name = open_name;
        command_list below;
        for (const Association& program : m_associations.programs()) {
            below.emplace_back(com::make<CExplorerCommandOpenWith>(
                command_description{next_name(name), program.program_name, program.program_name,
                                    program.icon},
                m_folder, utils::duplicate_key(program.key.get())));
        }
        below.emplace_back(com::make<CExplorerCommandSeparator>(next_name(name)));
        below.emplace_back(com::make<CExplorerCommandOpenWith>(
            command_description{next_name(name), L"Choose Default Program...", {}, {}}, m_folder,
            utils::unique_registry_key()));
        *ppEnum = com::make<CEnumExplorerCommandImpl>(std::move(below)).Detach();
        return S_OK;
    });
}

CExplorerCommandOpenWith::CExplorerCommandOpenWith(command_description description,
                                                   ComPtr<IShellFolder> folder,
                                                   utils::unique_registry_key key)
    : CExplorerCommandImpl(std::move(description)), m_folder(std::move(folder)),
      m_key(std::move(key)) {}

void CExplorerCommandOpenWith::invoke(IShellItemArray* items) {
    open(items, *m_folder.Get(), m_key.get(), !m_key);
}

} // namespace commands
