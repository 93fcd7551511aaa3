#pragma once

#include <string>

namespace shell {

/// `name` as one part of a local path: without the dots and blanks at its end, as the platform
/// makes such a file, since within a path it would not find what it made. Every name that the store
/// tells goes through here before it gets into a local path. Throws a `vfs::exception`, with a text
/// for the user, for a name that no local file can have.
std::wstring local_name(std::wstring name);

/// `name` for a local file that goes back to the store under the name that it has here: one that
/// would be made under another name is refused too.
std::wstring exact_local_name(std::wstring name);

} // namespace shell
