#pragma once

#include <filesystem>
#include <string>

namespace syncer {

/// The path of a directory among those of a user, below the user's local application data: it is
/// not made here. Throws `create_directory_exception`, with `where` as the operation that it names,
/// for a user name that no folder can have, as it would lead to another place. Blanks and dots at
/// the end of a name do not count, as nowhere on the platform.
std::filesystem::path user_directory(const std::wstring& user_name, const wchar_t* name,
                                     const char* where);

/// The path of a settings file of a user. Its directory is there afterwards; throws
/// `create_directory_exception` if it cannot be.
std::filesystem::path settings_file(const std::wstring& user_name, const wchar_t* name,
                                    const char* where);

} // namespace syncer
