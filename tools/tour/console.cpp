#include "console.h"

#include <windows.h>

#include <cstdio>

namespace tour {

void print(const std::wstring& line) {
    const int length = static_cast<int>(line.size());
    const int size =
        WideCharToMultiByte(CP_UTF8, 0, line.data(), length, nullptr, 0, nullptr, nullptr);
    std::string bytes(static_cast<std::size_t>(size), '\0');
    WideCharToMultiByte(CP_UTF8, 0, line.data(), length, bytes.data(), size, nullptr, nullptr);
    std::puts(bytes.c_str());
    std::fflush(stdout);
}

} // namespace tour
