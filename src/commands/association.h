#pragma once

#include "shell_items/seams.h"
#include "utils/unique_handle.h"

#include <windows.h>

#include <optional>
#include <string>

namespace commands {

/// A program that opens a kind of file, as a class in the registry tells it.
struct Association {
    utils::unique_registry_key key; ///< the class or application
    std::wstring key_name;          ///< its name in the registry, when it was found by that
    std::wstring title;             ///< what the menu entry of the verb says, or "Open"
    std::wstring icon;              ///< the executable followed by ",0"
    std::wstring program_name;
    std::wstring executable;
    shell::class_verb verb;
};

/// What the class behind an open key does by default: the verb that it names, or "open" when it
/// names none, or one that cannot be the name of a key.
shell::class_verb read_verb(HKEY key);

/// What stands behind an open key, which the result owns. Nothing when no program is registered
/// there.
std::optional<Association> make_association(utils::unique_registry_key key,
                                            std::wstring key_name = {});

/// The executable that a class key names; empty when it names none.
std::wstring executable_of(HKEY key);

} // namespace commands
