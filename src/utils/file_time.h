/// The platform's file times beside those of the contracts.
#pragma once

#include <windows.h>

#include <cstdint>
#include <limits>
#include <optional>

namespace utils {

inline constexpr std::int64_t file_time_steps_in_second = 10'000'000;
inline constexpr std::int64_t seconds_from_1601_to_1970 = 11'644'473'600;

/// In steps of 100 ns since 1601.
inline std::int64_t steps_of(const FILETIME& time) noexcept {
    return static_cast<std::int64_t>(std::uint64_t{time.dwHighDateTime} << 32 | time.dwLowDateTime);
}

/// Such steps as seconds since 1970, cut to whole ones.
inline std::int64_t seconds_of_steps(std::int64_t steps) noexcept {
    return static_cast<std::int64_t>(static_cast<std::uint64_t>(steps) /
                                     std::uint64_t{file_time_steps_in_second}) -
           seconds_from_1601_to_1970;
}

inline std::int64_t seconds_of(const FILETIME& time) noexcept {
    return seconds_of_steps(steps_of(time));
}

/// The way back from seconds since 1970. Nothing for a time that no file can have.
inline std::optional<FILETIME> file_time_of(std::int64_t seconds) noexcept {
    constexpr std::int64_t last =
        std::numeric_limits<std::int64_t>::max() / file_time_steps_in_second -
        seconds_from_1601_to_1970;
    if (seconds <= -seconds_from_1601_to_1970 || seconds > last) {
        return std::nullopt;
    }
    const std::int64_t steps = (seconds + seconds_from_1601_to_1970) * file_time_steps_in_second;
    return FILETIME{static_cast<DWORD>(steps), static_cast<DWORD>(steps >> 32)};
}

} // namespace utils
