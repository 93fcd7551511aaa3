#include "content.h"

#include "vfs_quilldeck/wire/exceptions.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <memory>
#include <utility>

namespace transfer_test {

namespace {

/// Makes one call of a transfer; false when it failed, which it may do for the line's sake alone.
template <class Call>
bool succeeds(const wchar_t* name, transfer_outcome& outcome, const Call& call) {
    try {
        call();
        return true;
    } catch (const vfs::exception& failure) {
        EXPECT_EQ(failure.get_name(), name);
        EXPECT_EQ(failure.get_description(), vfs_quilldeck::connection_failure_text);
        ++outcome.failures;
        return false;
    }
}

} // namespace

content make_content(std::size_t size, std::uint64_t seed) {
    std::mt19937_64 random(seed);
    content data(size);
    for (std::size_t at = 0; at < size; at += sizeof(std::uint64_t)) {
        const std::uint64_t word = random();
        std::memcpy(data.data() + at, &word, std::min(sizeof(word), size - at));
    }
    return data;
}

step_source steps_of(std::vector<std::size_t> lengths) {
    return [lengths = std::move(lengths), next = std::size_t{0}]() mutable {
        return lengths[next++ % lengths.size()];
    };
}

step_source random_steps(std::mt19937& random, std::size_t greatest) {
    return [&random, lengths = std::uniform_int_distribution<std::size_t>(1, greatest)]() mutable {
        return lengths(random);
    };
}

transfer_outcome write_all(const write_call& write, std::span<const unsigned char> data,
                           const step_source& step, int most_failures) {
    transfer_outcome outcome;
    while (!data.empty() && outcome.failures <= most_failures) {
        const auto piece = data.first(std::min(step(), data.size()));
        const auto length = static_cast<std::uint32_t>(piece.size());
        while (outcome.failures <= most_failures && !succeeds(L"Write failed", outcome, [&] {
                   data = data.subspan(write(piece.data(), length));
               })) {
        }
    }
    outcome.complete = data.empty();
    return outcome;
}

transfer_outcome read_all(vfs::file& file, content& data, const step_source& step,
                          int most_failures) {
    transfer_outcome outcome;
    content buffer;
    while (!outcome.complete && outcome.failures <= most_failures) {
        buffer.resize(step());
        succeeds(L"Read failed", outcome, [&] {
            const std::uint32_t delivered =
                file.read(buffer.data(), static_cast<std::uint32_t>(buffer.size()));
            data.insert(data.end(), buffer.begin(), buffer.begin() + delivered);
            outcome.complete = delivered < buffer.size();
        });
    }
    return outcome;
}

} // namespace transfer_test
