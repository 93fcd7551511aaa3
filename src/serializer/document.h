#pragma once

#include "serializer/arena.h"
#include "serializer/node.h"

#include <new>

namespace serializer {

/// A tree in an arena of its own, for what is read often and seldom changed: no node costs a call
/// of the heap, neither when it is made nor when it goes.
class document {
public:
    document()
        : root_(new(memory_.allocate(sizeof(node), alignof(node)))
                    node(node::allocator_type(&memory_))) {}

    document(const document&) = delete;
    document& operator=(const document&) = delete;

    node& root() { return *root_; }

    const node& root() const { return *root_; }

private:
    arena memory_;
    /// Never destroyed: all that the tree holds is in the arena.
    node* root_;
};

} // namespace serializer
