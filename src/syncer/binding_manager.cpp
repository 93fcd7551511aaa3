#include "syncer/binding_manager.h"

#include "serializer/file_serializer.h"
#include "syncer/binding_node.h"
#include "syncer/exceptions.h"
#include "syncer/user_directory.h"
#include "utils/filesystem.h"
#include "utils/narrow.h"

#include <source_location>
#include <system_error>
#include <utility>

namespace syncer {

namespace {

constexpr auto counter_key = L"next_rules_file_id";
constexpr auto binding_key = L"binding";

binding sought(const std::filesystem::path& dir_remote, const std::filesystem::path& dir_local,
               const std::wstring& filename) {
    return {dir_remote, dir_local, filename,      binding_mode::user, binding_type::permanent,
            L"",        0,         full_sync_rule};
}

} // namespace

binding_manager::binding_manager(std::wstring user_name, bool load)
    : user_name_(std::move(user_name)), mutex_(mutex_name(user_name_)), lock_(mutex_) {
    if (!load) {
        return;
    }
    const std::filesystem::path path = get_bindings_path(user_name_);
    if (utils::filesystem::exists(path)) {
        fill(*serializer::file_serializer::load_cached(path));
    }
}

binding_manager::~binding_manager() noexcept try { save(); } catch (...) {

    // A destructor cannot tell, be it of the save or of the mutex. The file is as it was.
    return;
}

void binding_manager::fill(const serializer::node& tree) {
    next_rules_file_id_ = tree.get_child_int(counter_key, 0);
    const auto [first, last] = tree.equal_range(binding_key);
    for (auto child = first; child != last; ++child) {
        binding read = read_binding(child->second);
        if (read._type != binding_type::temporary) {
            // The file is in the order of the set, and the first of two equal ones stays.
            bindings_.insert(bindings_.end(), std::move(read));
        }
    }
}

void binding_manager::add_binding(binding added) {
    if (bindings_.contains(added)) {
        throw duplicated_binding_exception(std::source_location::current().function_name(),
                                           text_of(added) + " is duplicated");
    }
    added.items_filename = L"sync_rules_" + std::to_wstring(next_rules_file_id_) + L".xml";
    // The number comes from a file: it may be the last one, behind which the lowest is unused.
    next_rules_file_id_ =
        static_cast<std::int32_t>(static_cast<std::uint32_t>(next_rules_file_id_) + 1);
    bindings_.insert(std::move(added));
    dirty_ = true;
}

void binding_manager::remove_binding(const binding& removed) {
    const auto found = bindings_.find(removed);
    if (found == bindings_.end()) {
        throw binding_not_found_exception(std::source_location::current().function_name(),
                                          text_of(removed) + " can not be found");
    }
    bindings_.erase(found);
    dirty_ = true;
}

void binding_manager::remove_binding(const std::filesystem::path& dir_remote,
                                     const std::filesystem::path& dir_local,
                                     const std::wstring& filename) {
    remove_binding(sought(dir_remote, dir_local, filename));
}

bool binding_manager::has_binding(const std::filesystem::path& dir_remote,
                                  const std::filesystem::path& dir_local,
                                  const std::wstring& filename) const {
    return bindings_.contains(sought(dir_remote, dir_local, filename));
}

void binding_manager::set_force_sync_once(const binding& forced, bool flag) {
    if (auto found = bindings_.extract(forced); !found.empty()) {
        found.value().force_sync_once = flag;
        bindings_.insert(std::move(found));
    }
    dirty_ = true;
}

binding_set binding_manager::get_bindings() const& {
    return bindings_;
}

binding_set binding_manager::get_bindings() && {
    save();
    return std::move(bindings_);
}

void binding_manager::save() {
    if (!dirty_) {
        return;
    }
    serializer::node tree(L"sync_bindings", L"");
    tree.set_child_int(counter_key, next_rules_file_id_);
    for (const binding& saved : bindings_) {
        write_binding(saved, tree.add_child(binding_key, L"")->second);
    }
    serializer::file_serializer::save_cached(get_bindings_path(user_name_), std::move(tree), false);
    dirty_ = false;
}

void binding_manager::commit() {
    try {
        save();
    } catch (...) {
        dirty_ = false;
        throw;
    }
}

std::wstring binding_manager::mutex_name(const std::wstring& user_name) {
    return L"Local\\" + user_name + L"_bindings_mutex";
}

std::filesystem::path binding_manager::get_bindings_path(const std::wstring& user_name) {
    return settings_file(user_name, L"bindings.xml",
                         std::source_location::current().function_name());
}

} // namespace syncer
