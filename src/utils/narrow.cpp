#include "utils/narrow.h"

#include <windows.h>

namespace utils {

std::string narrow(std::wstring_view text) {
    const auto convert = [text](char* to, int room) {
        return ::WideCharToMultiByte(CP_ACP, 0, text.data(), static_cast<int>(text.size()), to,
                                     room, nullptr, nullptr);
    };
    std::string narrowed(static_cast<std::size_t>(convert(nullptr, 0)), '\0');
    convert(narrowed.data(), static_cast<int>(narrowed.size()));
    return narrowed;
}

} // namespace utils
