/// Where hosts other than the file manager are told that the files of the drive lie.
#pragma once

#include <string>

namespace shell {

/// The folder of the files that `user_name` saves, which is made if need be. Ends without a
/// separator. Throws a standard exception.
std::wstring files_saved_folder(const std::wstring& user_name);

/// The folder under which the files are named that a save dialog is about to make; is not made.
std::wstring filter_folder();

} // namespace shell
