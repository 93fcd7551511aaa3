#include "vfs_quilldeck/items/item_cache.h"

#include <algorithm>
#include <functional>

namespace vfs_quilldeck {

namespace {

wchar_t fold_ascii(wchar_t c) {
    return c >= L'A' && c <= L'Z' ? static_cast<wchar_t>(c + (L'a' - L'A')) : c;
}

bool equal_without_case(std::wstring_view left, std::wstring_view right) {
    return std::ranges::equal(left, right, {}, fold_ascii, fold_ascii);
}

std::size_t hash_without_case(std::wstring_view key) {
    std::wstring folded(key);
    std::ranges::transform(folded, folded.begin(), fold_ascii);
    return std::hash<std::wstring>()(folded);
}

} // namespace

void item_cache::sort(index& keys) const {
    std::vector<entry> entries;
    entries.reserve(items_.size());
    for (std::size_t position = 0; position < items_.size(); ++position) {
        const vfs::item_ptr& item = items_[position];
        entries.push_back({item ? hash_without_case(((*item).*keys.get_key)()) : 0, position});
    }
    std::ranges::sort(entries);
    keys.entries.swap(entries);
}

template <class Accepts>
vfs::item_ptr* item_cache::find_place(index& keys, std::wstring_view key, const Accepts& accepts) {
    if (keys.entries.size() != items_.size()) {
        sort(keys);
    }
    const std::size_t hash = hash_without_case(key);
    auto found = std::ranges::lower_bound(keys.entries, entry{hash, 0});
    for (; found != keys.entries.end() && found->hash == hash; ++found) {
        vfs::item_ptr& item = items_[found->position];
        if (item && equal_without_case(((*item).*keys.get_key)(), key) && accepts(*item)) {
            return &item;
        }
    }
    return nullptr;
}

vfs::item_ptr item_cache::find(index& keys, std::wstring_view key) {
    const vfs::item_ptr* const place = find_place(keys, key, [](const vfs::item&) { return true; });
    return place ? *place : nullptr;
}

vfs::item_ptr item_cache::remove(const vfs::item_ptr& item) {
    const std::wstring id = item->get_id();
    vfs::item_ptr* place =
        find_place(ids_, id, [&item](const vfs::item& child) { return &child == item.get(); });
    if (!place) {
        place = find_place(ids_, id, [&](const vfs::item& child) {
            return child.get_id() == id && child.get_type() == item->get_type();
        });
    }
    return place ? std::exchange(*place, nullptr) : nullptr;
}

} // namespace vfs_quilldeck
