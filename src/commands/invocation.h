#pragma once

#include <shlobj.h>

#include <string>

namespace commands {

/// What a host asks a menu to carry out.
struct invocation {
    /// The text by which it names the command, in whichever of both forms it gives that; empty when
    /// it goes by number.
    std::wstring verb;
    /// Otherwise its offset from the first identifier.
    UINT offset = 0;
};

invocation read_invocation(const CMINVOKECOMMANDINFO& info);

} // namespace commands
