#include "utils/narrow.h"

#include <windows.h>

#include <algorithm>
#include <filesystem>

namespace utils {

namespace {

std::wstring widen(UINT page, std::string_view text) {
    const auto convert = [page, text](wchar_t* to, int room) {
        return ::MultiByteToWideChar(page, 0, text.data(), static_cast<int>(text.size()), to, room);
    };
    std::wstring widened(static_cast<std::size_t>(convert(nullptr, 0)), L'\0');
    convert(widened.data(), static_cast<int>(widened.size()));
    return widened;
}

} // namespace

std::string narrow(std::wstring_view text) {
    const auto convert = [text](char* to, int room) {
        return ::WideCharToMultiByte(CP_ACP, 0, text.data(), static_cast<int>(text.size()), to,
                                     room, nullptr, nullptr);
    };
    std::string narrowed(static_cast<std::size_t>(convert(nullptr, 0)), '\0');
    convert(narrowed.data(), static_cast<int>(narrowed.size()));
    return narrowed;
}

std::wstring widen(std::string_view text) {
    return widen(CP_ACP, text);
}

std::string narrow_message(const std::exception& failure) {
    const auto* const of_files = dynamic_cast<const std::filesystem::filesystem_error*>(&failure);
    if (of_files == nullptr) {
        return failure.what();
    }
    const std::string_view whole = of_files->what();
    const std::string words = of_files->code().message();
    const std::size_t at = std::min(whole.find(words), whole.size());
    const std::size_t behind = std::min(at + words.size(), whole.size());
    return narrow(widen(CP_UTF8, whole.substr(0, at))).append(whole.substr(at, behind - at)) +
           narrow(widen(CP_UTF8, whole.substr(behind)));
}

} // namespace utils
