#include "transfer/local_items/local_path.h"

#include <windows.h>

#include <vector>

namespace transfer {

namespace {

constexpr std::size_t drive_size = 3;

/// What a directory is listed by: its path with a pattern behind it.
constexpr std::size_t pattern_size = 2;

/// The place that the platform means by the path. It drops dots and blanks at the end of elements
/// and knows devices among the names.
std::wstring place_of(const std::wstring& path) {
    std::vector<wchar_t> place(path.size() + MAX_PATH);
    const DWORD length =
        ::GetFullPathNameW(path.c_str(), static_cast<DWORD>(place.size()), place.data(), nullptr);
    return length < place.size() ? std::wstring(place.data(), length) : std::wstring();
}

/// `\\.\` and `\\?\` lead to devices, and past the rules for names.
bool is_device(const std::wstring& path) {
    return path.starts_with(L"\\\\.\\") || path.starts_with(L"\\\\?\\");
}

bool has_forbidden_character(const std::wstring& path) {
    return path.find_first_of(L"<>:\"|?*", drive_size) != std::wstring::npos;
}

} // namespace

std::wstring normalised(std::wstring_view path) {
    std::wstring result;
    for (const wchar_t character : path) {
        const bool separator = character == L'\\' || character == L'/';
        // Two at the beginning are those of a server.
        if (!separator || result.size() < 2 || result.back() != L'\\') {
            result += separator ? L'\\' : character;
        }
    }
    if (result.size() > drive_size && result.back() == L'\\') {
        result.pop_back();
    }
    return result;
}

std::wstring last_element(std::wstring_view path) {
    return std::wstring(path.substr(path.find_last_of(L"\\/") + 1));
}

const wchar_t* fault_of_local_path(const std::wstring& path, bool directory) {
    if (path.size() + (directory ? pattern_size : 0) >= MAX_PATH) {
        return L"The path is longer than Windows allows.";
    }
    if (last_element(path).empty()) {
        return L"A drive has no name that a folder could get.";
    }
    if (is_device(path) || has_forbidden_character(path)) {
        return L"Windows does not allow this name.";
    }
    if (place_of(path) != path) {
        return L"Windows takes this name for another one.";
    }
    return nullptr;
}

} // namespace transfer
