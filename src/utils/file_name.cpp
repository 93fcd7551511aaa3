#include "utils/file_name.h"

#include <windows.h>

#include <algorithm>

namespace utils {

namespace {

constexpr std::size_t longest_name = 255;

/// The separators, the mark of drives and streams, and what stands for other characters when the
/// platform looks for files.
constexpr std::wstring_view forbidden = L"\\/:*?\"<>|";

constexpr std::wstring_view devices[] = {L"CON", L"PRN", L"AUX", L"NUL", L"CONIN$", L"CONOUT$"};
/// With one digit behind them.
constexpr std::wstring_view ports[] = {L"COM", L"LPT"};
constexpr std::wstring_view port_numbers = L"0123456789\u00b9\u00b2\u00b3";

bool equal_without_case(std::wstring_view left, std::wstring_view right) noexcept {
    return CompareStringOrdinal(left.data(), static_cast<int>(left.size()), right.data(),
                                static_cast<int>(right.size()), TRUE) == CSTR_EQUAL;
}

/// Devices are found in any folder, and whatever extension stands behind their names.
bool is_device(std::wstring_view name) noexcept {
    name = name.substr(0, name.find(L'.'));
    name = name.substr(0, name.find_last_not_of(L' ') + 1);
    const auto is_name = [name](std::wstring_view device) {
        return equal_without_case(name, device);
    };
    return std::ranges::any_of(devices, is_name) ||
           (name.size() == 4 && port_numbers.find(name.back()) != std::wstring_view::npos &&
            std::ranges::any_of(ports, [name](std::wstring_view port) {
                return equal_without_case(name.substr(0, port.size()), port);
            }));
}

} // namespace

std::wstring_view made_name(std::wstring_view name) noexcept {
    return name.substr(0, name.find_last_not_of(L". ") + 1);
}

bool is_file_name(std::wstring_view name) noexcept {
    const std::wstring_view made = made_name(name);
    const auto is_allowed = [](wchar_t c) {
        return c >= L' ' && forbidden.find(c) == std::wstring_view::npos;
    };
    return !made.empty() && made.size() <= longest_name && std::ranges::all_of(made, is_allowed) &&
           !is_device(made);
}

} // namespace utils
