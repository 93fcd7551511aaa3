/// What a program does with files that others drop on it.
#pragma once

#include <objidl.h>
#include <oleidl.h>
#include <wrl/client.h>

#include <filesystem>
#include <functional>

namespace desktop {

/// Whether `source` has files that are its own, with their bytes in streams.
bool offers_files(IDataObject& source);

/// Writes the files and folders that `source` has of its own to a local folder. Throws
/// `com::status_exception`, and what the file system does.
void take_files(IDataObject& source, const std::filesystem::path& folder);

/// A drop target that copies what is dropped to a folder and then calls `done`, on its own thread.
Microsoft::WRL::ComPtr<IDropTarget> make_file_target(std::filesystem::path folder,
                                                     std::function<void()> done);

/// The platform's own data object for a local file or folder.
Microsoft::WRL::ComPtr<IDataObject> local_data(const std::filesystem::path& path);

/// A drop source that goes by the left mouse button.
Microsoft::WRL::ComPtr<IDropSource> make_drop_source();

} // namespace desktop
