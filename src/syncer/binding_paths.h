/// The two ends of a binding as paths, and how paths are compared wherever bindings are looked for.
#pragma once

#include "syncer/binding.h"

#include <string>
#include <string_view>

namespace syncer {

/// Whether two paths are the same but for their separators, of which both kinds are alike. Nothing
/// else is: not case, and not a separator more at the end.
bool same_path(std::wstring_view left, std::wstring_view right) noexcept;

/// `name` behind `folder`, with `separator` between them unless `folder` ends with one. An empty
/// name leaves the folder.
std::wstring join_path(std::wstring folder, std::wstring_view name, wchar_t separator);

/// What is bound at this end: the file in its directory, or the directory.
std::wstring local_path_of(const binding& named);
/// The same in the store, with "/" before the file's name.
std::wstring remote_path_of(const binding& named);

} // namespace syncer
