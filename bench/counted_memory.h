#pragma once

#include <cstdint>

namespace bench {

/// The bytes that this program holds by `new`, with 16 for the heap's own of each block.
std::int64_t held_bytes();

} // namespace bench
