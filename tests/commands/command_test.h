#pragma once

#include "../shell/signed_in.h"

#include "shell_items/seams.h"

#include <memory>
#include <string>
#include <vector>

namespace commands {

using Microsoft::WRL::ComPtr;

/// A test of what the folder `place` of the drive offers. It holds the folder "tree" and the files
/// of the table in the constructor, which are empty. The layers are joined as the module does it,
/// but that `calls` notes what reaches the open worker and the dialogs.
class command_test : public shell::signed_in {
protected:
    command_test();
    ~command_test() override;

    /// The folder with that path from the drive, once it was listed.
    static ComPtr<IShellFolder2> listed(const std::wstring& path);

    /// A data object, a menu or what else there is for children of a folder.
    template <class Interface>
    static ComPtr<Interface> object_of(IShellFolder& folder,
                                       const std::vector<std::wstring>& names) {
        std::vector<com::unique_id_list> lists;
        std::vector<PCUITEMID_CHILD> items;
        for (const std::wstring& each : names) {
            lists.push_back(shell::parse(folder, each));
            items.push_back(lists.back().get());
        }
        ComPtr<Interface> made;
        com::check(folder.GetUIObjectOf(nullptr, static_cast<UINT>(items.size()), items.data(),
                                        __uuidof(Interface), nullptr, &made));
        return made;
    }

    /// What was noted since the last call, parted by "; ".
    static std::wstring calls();
    /// Replaces the row for the properties, without which nothing leads there.
    static void offer_properties(bool offered);

    std::wstring name;
    ComPtr<IShellFolder2> place;
    std::shared_ptr<vfs::directory> directory;
};

} // namespace commands
