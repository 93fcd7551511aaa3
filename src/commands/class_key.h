/// The keys of file classes, by which the platform tells what opens a file.
#pragma once

#include "utils/unique_handle.h"

#include <windows.h>

#include <shlwapi.h>

#include <string>

namespace commands {

/// The key of `kind` for a file name, or for an executable; null when there is none. Asks the
/// platform's association service; where there is none, the same classes are read from the
/// registry: a name's class is the one that its extension's key names, or that key itself; an
/// executable's is its entry below "Applications".
utils::unique_registry_key find_class_key(ASSOCKEY kind, const std::wstring& name);

/// A key below HKEY_CLASSES_ROOT for reading; null when there is none.
utils::unique_registry_key open_class(const std::wstring& name);

/// The key of the application whose executable has the file name `name`; null when there is none.
utils::unique_registry_key open_application(const std::wstring& name);

} // namespace commands
