#pragma once

#include "syncer/binding.h"

#include <filesystem>
#include <string>

namespace syncer {

/// What is asked of the synchroniser, each a short transaction on the user's bindings file: the
/// synchroniser, which is in the session process, sees for itself that the file has changed.
/// Nothing else passes between the two. Any thread may call; failures of `binding_manager` pass,
/// and so do those of a save.
class manager {
public:
    manager() = delete;

    /// Asks for one pass of that binding, or takes that back.
    static void force_sync(const std::wstring& user_name, const binding& forced, bool flag);

    static binding_set get_bindings(const std::wstring& user_name);

    /// Throws `binding_not_found_exception` too, for a binding that another process removed.
    static void remove_binding(const std::wstring& user_name, const binding& removed);

    /// Where local copies of the user's remote files are, which are edited and go back. It is made
    /// if it is missing.
    static std::filesystem::path get_files_saved_directory(const std::wstring& user_name);

    /// Makes a missing directory with all that is missing above it. Throws
    /// `create_directory_exception` or `std::filesystem::filesystem_error`.
    static void check_create_directory(const std::filesystem::path& path);
};

} // namespace syncer
