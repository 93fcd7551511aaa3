#pragma once

#include "failures.h"

#include "vfs/vfs.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>

namespace transfer_test {

/// All names below, in order: "file folder(file folder())".
inline std::wstring tree_of(vfs::directory& directory) {
    std::wstring tree;
    for (const vfs::item_ptr& item : directory.get_items()) {
        tree += (tree.empty() ? L"" : L" ") + item->get_name();
        if (const auto folder = std::dynamic_pointer_cast<vfs::directory>(item)) {
            tree += L"(" + tree_of(*folder) + L")";
        }
    }
    return tree;
}

template <class Item>
std::shared_ptr<Item> find(vfs::directory& directory, const std::wstring& name) {
    return std::dynamic_pointer_cast<Item>(directory.find_item_by_name(name, false));
}

} // namespace transfer_test
