#pragma once

#include <cstddef>

namespace support {

/// How much of the platform's this process holds.
struct process_census {
    std::size_t handles = 0;
    std::size_t threads = 0;

    friend bool operator==(const process_census&, const process_census&) = default;
};

process_census count_process();

/// How many bytes are allocated in all heaps of this process.
std::size_t allocated_bytes();

} // namespace support
