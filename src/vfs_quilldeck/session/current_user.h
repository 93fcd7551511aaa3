#pragma once

#include <windows.h>

#include <optional>
#include <string>

namespace vfs_quilldeck {

/// The name of the signed-in user, nothing when nobody is. The same as `is_logged_in` and
/// `get_user_info`, but for calls that come in bursts, one for each item that a window paints: for
/// a twentieth of a second the companions are taken to run on. A change of the identity is seen at
/// once all the same. `module` and failures as there; any thread.
std::optional<std::wstring> find_current_user_name(HMODULE module);

} // namespace vfs_quilldeck
