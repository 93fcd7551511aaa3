/// Waiting for what another process shows.
#pragma once

#include <windows.h>

#include <optional>
#include <stdexcept>
#include <string>

namespace desktop {

template <class T>
inline constexpr bool is_optional = false;
template <class T>
inline constexpr bool is_optional<std::optional<T>> = true;

/// Asks `condition` until it answers something true, and returns that, or what an optional answer
/// holds. Throws `std::runtime_error` that names `what` when 30 s have passed.
template <class Condition>
auto wait_for(const std::string& what, Condition&& condition) {
    constexpr ULONGLONG patience = 30'000;
    constexpr DWORD pause = 20;
    const ULONGLONG end = ::GetTickCount64() + patience;
    for (;;) {
        if (auto answer = condition()) {
            if constexpr (is_optional<decltype(answer)>) {
                return *answer;
            } else {
                return answer;
            }
        }
        if (::GetTickCount64() > end) {
            throw std::runtime_error("waited in vain for " + what);
        }
        ::Sleep(pause);
    }
}

} // namespace desktop
