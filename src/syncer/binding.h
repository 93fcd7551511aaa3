#pragma once

#include <cstdint>
#include <filesystem>
#include <set>
#include <string>

namespace syncer {

/// How long a binding lives. Files may hold other numbers, which are carried along.
enum class binding_type : std::int32_t {
    /// Kept, shown and marked.
    permanent = 0,
    /// In the file for the synchroniser only: it is dropped by the next load.
    temporary = 1,
};

/// What a binding is for. Files may hold other numbers, which are carried along.
enum class binding_mode : std::int32_t {
    /// The user made it on a property page.
    user = 1,
    /// It carries an edited local copy of a remote file back to the store.
    edited_copy = 2,
};

/// What the synchroniser may do. Each is 0 (its own default), 1 (not allowed) or 2 (allowed).
struct binding_rule {
    std::int32_t can_upload = 0;
    std::int32_t can_download = 0;
    std::int32_t can_overwrite_upload = 0;
    std::int32_t can_overwrite_download = 0;
    std::int32_t can_remove_remote = 0;
    std::int32_t can_remove_remote_dir = 0;
    std::int32_t can_remove_local = 0;
    std::int32_t can_remove_local_dir = 0;

    friend bool operator==(const binding_rule&, const binding_rule&) = default;
};

inline constexpr binding_rule full_sync_rule{};
inline constexpr binding_rule backup_rule{2, 1, 2, 1, 1, 1, 1, 1};
inline constexpr binding_rule edited_copy_rule{1, 1, 2, 1, 1, 1, 1, 1};

/// A local file or folder that is tied to a remote one.
struct binding {
    binding() = default;
    binding(std::filesystem::path remote, std::filesystem::path local, std::wstring file,
            binding_mode mode, binding_type type, std::wstring items_file,
            std::int32_t recourse_subdirs, const binding_rule& rules);

    binding_type _type = binding_type::permanent;
    binding_mode _mode = binding_mode::user;
    /// Begins with "Quilldeck".
    std::filesystem::path dir_remote;
    std::filesystem::path dir_local;
    /// The file's name in both directories, empty for the whole folder.
    std::wstring filename;
    /// Carried along; 0 in what is written here.
    std::int32_t can_recourse_subdirs = 0;
    binding_rule rule;
    /// Asks the synchroniser for one pass now.
    bool force_sync_once = false;
    /// The name of the synchroniser's own file for this binding.
    std::wstring items_filename;
};

/// Orders by both directories, element by element, and the file's name. What has these in common
/// is the same binding.
struct binding_order {
    bool operator()(const binding& left, const binding& right) const;
};

using binding_set = std::set<binding, binding_order>;

/// How bindings name what lies at `path` in the user's tree, in the store's words; an empty path is
/// the top.
std::wstring remote_path_of(const std::wstring& path);

/// How failures name a binding.
std::string text_of(const binding& named);

} // namespace syncer
