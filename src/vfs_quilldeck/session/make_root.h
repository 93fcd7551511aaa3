#pragma once

#include "vfs/item.h"

namespace vfs_quilldeck {

class client;

/// The top of the tree that the session of `client` sees: that of the user, or of a guest. A
/// session knows no items; who makes them defines this (items/make_root.cpp).
vfs::item_ptr make_root(const client& client);

} // namespace vfs_quilldeck
