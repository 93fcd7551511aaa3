/// Bindings as they stand in the settings file, one node each.
#pragma once

#include "serializer/node.h"
#include "syncer/binding.h"

namespace syncer {

/// Throws `serializer::wrong_format_exception` if the node has no rule: what the synchroniser may
/// do then must not be guessed.
binding read_binding(const serializer::node& from);

/// Adds the binding's values to an empty node.
void write_binding(const binding& from, serializer::node& to);

} // namespace syncer
