#include "syncer/bound_items.h"

#include "serializer/file_serializer.h"
#include "syncer/binding_manager.h"
#include "syncer/binding_node.h"
#include "syncer/binding_paths.h"
#include "utils/filesystem.h"
#include "utils/named_mutex.h"

#include <algorithm>
#include <atomic>
#include <memory>
#include <unordered_set>

namespace syncer {

namespace {

/// The paths that carry a permanent binding in one state of a user's file. Never changed.
struct bound_paths {
    std::wstring user_name;
    std::filesystem::path file;
    /// Null: there was no file.
    std::weak_ptr<const serializer::node> tree;
    bool has_file = false;
    std::unordered_set<std::wstring> paths;
};

using bound_paths_ptr = std::shared_ptr<const bound_paths>;

/// Those of the last call.
std::atomic<bound_paths_ptr> latest;

/// One spelling of a path for all that `same_path` finds equal.
std::wstring key_of(std::wstring_view path) {
    std::wstring key(path);
    std::ranges::replace(key, L'/', L'\\');
    return key;
}

bool is_current(const bound_paths& known, const std::wstring& user_name) {
    if (known.user_name != user_name) {
        return false;
    }
    if (!known.has_file) {
        return !utils::filesystem::exists(known.file);
    }
    const auto tree = known.tree.lock();
    return tree && serializer::file_serializer::find_current(known.file) == tree;
}

bound_paths_ptr read(const std::wstring& user_name) {
    auto made = std::make_shared<bound_paths>();
    made->user_name = user_name;
    utils::named_mutex mutex(binding_manager::mutex_name(user_name));
    const utils::mutex_hold hold(mutex);
    made->file = binding_manager::get_bindings_path(user_name);
    made->has_file = utils::filesystem::exists(made->file);
    if (made->has_file) {
        const auto tree = serializer::file_serializer::load_cached(made->file);
        const auto [first, last] = tree->equal_range(L"binding");
        for (auto child = first; child != last; ++child) {
            if (const binding each = read_binding(child->second);
                each._type == binding_type::permanent) {
                made->paths.insert(key_of(local_path_of(each)));
            }
        }
        made->tree = tree;
    }
    return made;
}

} // namespace

bool is_bound(const std::wstring& user_name, std::wstring_view local_path) {
    bound_paths_ptr known = latest.load();
    if (!known || !is_current(*known, user_name)) {
        known = read(user_name);
        latest.store(known);
    }
    return known->paths.contains(key_of(local_path));
}

} // namespace syncer
