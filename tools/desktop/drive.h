/// The drive as any program reaches it: through the shell's own calls.
#pragma once

#include "com/memory.h"

#include <wrl/client.h>

#include <shobjidl.h>

#include <string>
#include <vector>

// The thread of each call is in an apartment. Failures throw `com::status_exception`.
namespace desktop {

/// The absolute list of the drive.
com::unique_id_list drive_list();

/// A folder of the drive; `path` names the way from the drive's root with backslashes, and is empty
/// for the root.
Microsoft::WRL::ComPtr<IShellFolder> drive_folder(const std::wstring& path);

/// The bytes of a file of the drive, read through an `IStream` that its folder gives.
std::vector<char> read_from_drive(const std::wstring& path);

/// Makes a new file in a folder of the drive through the folder's `IStorage`, and writes `content`.
void write_to_drive(const std::wstring& folder, const std::wstring& name,
                    const std::vector<char>& content);

} // namespace desktop
