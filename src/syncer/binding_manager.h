#pragma once

#include "syncer/binding.h"
#include "utils/named_mutex.h"

#include <cstdint>
#include <filesystem>
#include <string>

namespace serializer {
class node;
}

namespace syncer {

/// A transaction on a user's bindings: it is built, changes them, and goes. All the while every
/// other thread and process of the user waits for the bindings mutex, the synchroniser too, so that
/// none is kept over a dialog or a transfer. It belongs to the thread that built it, which builds
/// no second one meanwhile.
class binding_manager {
public:
    /// Waits for the mutex without limit. With `load` the bindings of the file are there, but for
    /// the temporary ones; no file is no bindings. Throws `utils::system_error_exception` for the
    /// mutex, `create_directory_exception`, and what `serializer::file_serializer::load_cached`
    /// throws: the file stays as it is then.
    binding_manager(std::wstring user_name, bool load);
    binding_manager(const binding_manager&) = delete;
    binding_manager& operator=(const binding_manager&) = delete;
    /// Saves, in silence: whoever needs to know calls `save` before.
    virtual ~binding_manager() noexcept;

    /// Adds the binding under the next name of a rules file, which replaces its `items_filename`.
    /// Throws `duplicated_binding_exception`.
    void add_binding(binding added);

    /// The name of its rules file is not used again. Throws `binding_not_found_exception`.
    void remove_binding(const binding& removed);
    void remove_binding(const std::filesystem::path& dir_remote,
                        const std::filesystem::path& dir_local, const std::wstring& filename);

    bool has_binding(const std::filesystem::path& dir_remote,
                     const std::filesystem::path& dir_local, const std::wstring& filename) const;

    /// Does nothing to the bindings if this one is not there.
    void set_force_sync_once(const binding& forced, bool flag);

    binding_set get_bindings() const&;
    /// Of a transaction that ends here: saves, and copies nothing.
    binding_set get_bindings() &&;

    /// Writes the bindings if they were changed. Throws `create_directory_exception` and what
    /// `serializer::file_serializer::save_cached` throws.
    void save();

    /// The same at the end of the transaction: what cannot be saved is given up, so that the
    /// destructor, which would not tell, does not save it after all.
    void commit();

    /// The name of the mutex that guards the user's bindings.
    static std::wstring mutex_name(const std::wstring& user_name);

    /// The user's file. Its directory is there afterwards; throws `create_directory_exception` if
    /// it cannot be.
    static std::filesystem::path get_bindings_path(const std::wstring& user_name);

private:
    void fill(const serializer::node& tree);

    std::wstring user_name_;
    utils::named_mutex mutex_;
    utils::mutex_hold lock_;
    bool dirty_ = false;
    std::int32_t next_rules_file_id_ = 0;
    binding_set bindings_;
};

} // namespace syncer
