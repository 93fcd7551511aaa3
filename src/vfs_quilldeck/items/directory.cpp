#include "vfs_quilldeck/items/directory.h"

#include "vfs_quilldeck/items/file.h"
#include "vfs_quilldeck/wire/exceptions.h"

#include <boost/format.hpp>

#include <algorithm>
#include <exception>
#include <mutex>
#include <utility>

namespace vfs_quilldeck {

namespace {

bool is_directory(const vfs::item& item) {
    return item.get_type() == vfs::type_directory;
}

/// The parameter by which the wire names `child`.
request_params id_param(const vfs::item_ptr& child) {
    const auto remote = std::dynamic_pointer_cast<item>(child);
    if (!remote) {
        throw exception(L"Internal error", L"The item does not belong to the store");
    }
    return {{is_directory(*child) ? L"dir_id" : L"file_id", remote->get_raw_id()}};
}

constexpr int create_mode = vfs::modeWrite | vfs::modeOverwrite;

} // namespace

directory::directory(item_link link, directory_fields fields)
    : link_(std::move(link)), fields_(std::move(fields)), description_(fields_.description) {}

std::wstring directory::get_path() {
    return link_.request_route_last(L"get_dir_path", {{L"dir_id", get_raw_id()}})
        .get_child_text(L"Path");
}

std::wstring directory::get_description() const {
    const std::lock_guard guard(cache_lock_);
    return description_;
}

void directory::set_description(const std::wstring& description) {
    link_.request(L"set_dir_description",
                  {{L"dir_id", get_raw_id()}, {L"description", description}});
    const std::lock_guard guard(cache_lock_);
    description_ = description;
}

vfs::byte_buffer directory::get_thumbnail() {
    throw exception(L"Internal error", L"directory::get_thumbnail(): Operation not implemented");
}

void directory::set_access(std::int32_t access) {
    link_.request(L"set_dir_access",
                  {{L"dir_id", get_raw_id()}, {L"access", std::to_wstring(access)}});
}

void directory::restore() {
    link_.get_client().operations_request(
        {{L"action", L"restore_dir_from_trash"}, {L"dir_id", get_raw_id()}});
}

std::vector<vfs::item_ptr> directory::get_items() {
    auto listed = list_items();
    replace_cache(item_cache(listed));
    return listed;
}

std::vector<vfs::item_ptr> directory::list_items() {
    return read_items(link_.request_route_last(L"list_dir", {{L"dir_id", get_raw_id()}}));
}

std::vector<vfs::item_ptr> directory::read_items(const reply_node& reply) const {
    const auto directories = reply.get_children(L"Directory");
    const auto files = reply.get_children(L"File");
    std::vector<vfs::item_ptr> listed;
    listed.reserve(directories.size() + files.size());
    for (const reply_node& node : directories) {
        listed.push_back(make_directory(node));
    }
    for (const reply_node& node : files) {
        listed.push_back(make_file(node, {}, 0));
    }
    return listed;
}

vfs::item_ptr directory::make_directory(const reply_node& node) const {
    return std::make_shared<directory>(link_, read_directory_fields(node));
}

vfs::item_ptr directory::make_file(const reply_node& node, const std::wstring& temp_location,
                                   std::int32_t open_mode) const {
    return std::make_shared<file>(link_, read_file_fields(node), temp_location, open_mode);
}

vfs::item_ptr directory::find_item_by_name(const std::wstring& name, bool refresh) {
    return find_item(name, refresh, &item_cache::find_by_name);
}

vfs::item_ptr directory::find_item_by_id(const std::wstring& id, bool refresh) {
    return find_item(id, refresh, &item_cache::find_by_id);
}

vfs::item_ptr directory::find_known_item_by_id(const std::wstring& id) {
    const std::lock_guard guard(cache_lock_);
    return cache_.find_by_id(id);
}

vfs::item_ptr directory::find_item(const std::wstring& key, bool refresh, look_up by) {
    if (!refresh) {
        const std::lock_guard guard(cache_lock_);
        if (vfs::item_ptr found = (cache_.*by)(key)) {
            return found;
        }
    }
    // The listing itself is searched: another thread may clear the cache, or put an older listing
    // there, at any time.
    item_cache listed(get_items());
    if (vfs::item_ptr found = (listed.*by)(key)) {
        return found;
    }
    const auto text = L"File system error: item '%1%' not found in directory '%2%'";
    throw item_not_found_exception(L"Item not found",
                                   (boost::wformat(text) % key % get_name()).str());
}

void directory::replace_cache(item_cache other) {
    const std::lock_guard guard(cache_lock_);
    std::swap(cache_, other);
}

void directory::rename_item(const std::wstring& name, const std::wstring& new_name) {
    rename_item(find_item_by_name(name, false), new_name);
}

void directory::rename_item(const vfs::item_ptr& item, const std::wstring& new_name) {
    link_.request(is_directory(*item) ? L"rename_dir" : L"rename_file", id_param(item),
                  {{L"new_name", new_name}});
    replace_cache({});
}

void directory::delete_item(const std::wstring& name, bool to_trash) {
    delete_item(find_item_by_name(name, false), to_trash);
}

void directory::delete_item(const vfs::item_ptr& item, bool to_trash) {
    const wchar_t* action = to_trash ? L"move_file_to_trash" : L"remove_file";
    if (is_directory(*item)) {
        action = to_trash ? L"move_dir_to_trash" : L"remove_dir";
    }
    link_.request(action, id_param(item));

    vfs::item_ptr removed;
    const std::lock_guard guard(cache_lock_);
    removed = cache_.remove(item);
}

vfs::item_ptr directory::create_file(const std::wstring& name) {
    return create_file_alloc(name, 0);
}

vfs::item_ptr directory::create_file_alloc(const std::wstring& name, std::int64_t size) {
    return create_file_by(L"create_file", name, size, 0);
}

vfs::item_ptr directory::create_and_open_file(const std::wstring& name, std::int32_t mode,
                                              std::int64_t size) {
    if (mode != create_mode) {
        throw exception(L"Internal error",
                        L"Wrong file open mode: only modeWrite|modeOverwrite is supported");
    }
    return create_file_by(L"create_and_open_file", name, size, mode);
}

vfs::item_ptr directory::create_file_by(const wchar_t* action, const std::wstring& name,
                                        std::int64_t size, std::int32_t open_mode) {
    const reply_node reply = link_.request(action, {{L"dir_id", get_raw_id()},
                                                    {L"dir_access", std::to_wstring(get_access())},
                                                    {L"name", name},
                                                    {L"size", std::to_wstring(size)},
                                                    {L"is_pro", L"0"}});
    replace_cache({});
    const auto files = reply.get_children(L"File");
    if (files.empty()) {
        throw exception(L"Parse error", L"Server side error");
    }
    const reply_node& made = files.front();
    try {
        return make_file(made, made.get_child_text(L"TempLocation"), open_mode);
    } catch (...) {
        // Its upload could not be opened, and nobody else knows that it is there.
        remove_unopened(made.get_child_text(L"ID"));
        throw;
    }
}

void directory::remove_unopened(const std::wstring& raw_id) const noexcept {
    try {
        link_.request(L"remove_file", {{L"file_id", raw_id}});
    } catch (const std::exception&) {
        return;
    } catch (const vfs::exception&) {
        // What made the opening fail may well stand in the way here too.
        return;
    }
}

vfs::item_ptr directory::create_directory(const std::wstring& name) {
    link_.request(L"create_dir", {{L"dir_id", get_raw_id()},
                                  {L"dir_access", std::to_wstring(get_access())},
                                  {L"name", name}});
    replace_cache({});
    try {
        return std::dynamic_pointer_cast<vfs::directory>(find_item_by_name(name, false));
    } catch (const exception& cause) {
        throw exception(L"Error creating directory", cause.get_description());
    }
}

request_params directory::get_copy_target_params() const {
    request_params params{{L"dst_dir_id", get_raw_id()}};
    append(params, link_.get_route(L"dst_"));
    return params;
}

} // namespace vfs_quilldeck
