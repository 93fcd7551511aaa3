/// What all parts of the walkthrough share.
#pragma once

#include "vfs/directory.h"

#include <memory>
#include <string>

namespace desktop {

/// Prints a line at once: another program waits for it.
void say(const std::string& line);

/// Has the screen taken as a picture, when what was done last has been drawn.
void take_picture(const std::string& name);

/// Tells that `what` holds; throws `std::runtime_error` with it where it does not.
void require(bool fulfilled, const std::string& what);

/// A folder in the store itself, past the file manager, to look at what became of it and to put
/// things back as they were. It is named from the root; "" is the root.
std::shared_ptr<vfs::directory> stored_folder(const std::wstring& name);

/// Deletes an item of such a folder for good; what is not there stays away.
void remove_if_there(vfs::directory& folder, const std::wstring& name);

} // namespace desktop
