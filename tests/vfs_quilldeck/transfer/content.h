/// Bytes to send, and the steps in which a caller moves them.
#pragma once

#include "vfs/file.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <random>
#include <span>
#include <vector>

namespace transfer_test {

using content = std::vector<unsigned char>;

/// `size` bytes of a generator seeded with `seed`: no part of them equals another.
content make_content(std::size_t size, std::uint64_t seed);

/// The length of the next call.
using step_source = std::function<std::size_t()>;

/// Goes round the given lengths.
step_source steps_of(std::vector<std::size_t> lengths);
/// From 1 to `greatest`.
step_source random_steps(std::mt19937& random, std::size_t greatest);

/// What the calls of one transfer came to.
struct transfer_outcome {
    int failures = 0;      ///< calls that failed with the connection's text
    bool complete = false; ///< no call is left
};

/// `write` of a file or of a stream.
using write_call = std::function<std::uint32_t(const void*, std::uint32_t)>;

/// Writes `data` as the copy workers do: a call that failed is made again with the same bytes.
/// Gives up after `most_failures`.
transfer_outcome write_all(const write_call& write, std::span<const unsigned char> data,
                           const step_source& step, int most_failures = 0);

inline transfer_outcome write_all(vfs::file& file, std::span<const unsigned char> data,
                                  const step_source& step, int most_failures = 0) {
    return write_all(std::bind_front(&vfs::file::write, &file), data, step, most_failures);
}

/// Reads to the end into `data`; what a failed call delivered is thrown away.
transfer_outcome read_all(vfs::file& file, content& data, const step_source& step,
                          int most_failures = 0);

} // namespace transfer_test
