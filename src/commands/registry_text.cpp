#include "commands/registry_text.h"

namespace commands {

namespace {

/// The longest path of the platform, and the longest name of a value, in characters.
constexpr DWORD longest_text = 32768;
constexpr DWORD longest_name = 16384;

/// All names that `next(index, buffer, size)`, one of the platform's enumerations, gives.
template <class Next>
std::vector<std::wstring> names(const Next& next) {
    std::vector<std::wstring> found;
    std::wstring buffer(longest_name, L'\0');
    for (DWORD index = 0;; ++index) {
        DWORD size = longest_name;
        if (next(index, buffer.data(), &size) != ERROR_SUCCESS) {
            return found;
        }
        if (size != 0) {
            found.emplace_back(buffer, 0, size);
        }
    }
}

} // namespace

std::wstring read_text(HKEY key, const std::wstring& subkey, const wchar_t* value) {
    // This call ends a value that has no end.
    constexpr DWORD texts = RRF_RT_REG_SZ;
    DWORD size = 0;
    if (RegGetValueW(key, subkey.c_str(), value, texts, nullptr, nullptr, &size) != ERROR_SUCCESS ||
        size > longest_text * sizeof(wchar_t)) {
        return {};
    }
    std::wstring text(size / sizeof(wchar_t), L'\0');
    if (RegGetValueW(key, subkey.c_str(), value, texts, nullptr, text.data(), &size) !=
        ERROR_SUCCESS) {
        return {};
    }
    text.resize(text.find(L'\0'));
    return text;
}

std::vector<std::wstring> value_names(HKEY key) {
    return names([key](DWORD index, wchar_t* name, DWORD* size) {
        return RegEnumValueW(key, index, name, size, nullptr, nullptr, nullptr, nullptr);
    });
}

std::vector<std::wstring> subkey_names(HKEY key) {
    return names([key](DWORD index, wchar_t* name, DWORD* size) {
        return RegEnumKeyExW(key, index, name, size, nullptr, nullptr, nullptr, nullptr);
    });
}

} // namespace commands
