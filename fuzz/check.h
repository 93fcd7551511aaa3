#pragma once

#include <cstdio>
#include <cstdlib>

namespace fuzz {

/// Ends the fuzzer, so that the input is kept, unless `holds`.
inline void check(bool holds, const char* what) {
    if (!holds) {
        std::fprintf(stderr, "not true: %s\n", what);
        std::abort();
    }
}

} // namespace fuzz
