#include "utils/module.h"

#include "utils/exceptions.h"

#include <source_location>

// Where the linker put the module that it made of this code.
extern "C" IMAGE_DOS_HEADER __ImageBase;

namespace utils {

HMODULE own_module() noexcept {
    return reinterpret_cast<HMODULE>(&__ImageBase);
}

std::wstring own_module_path() {
    std::wstring path(MAX_PATH, L'\0');
    for (;;) {
        const DWORD length =
            GetModuleFileNameW(own_module(), path.data(), static_cast<DWORD>(path.size()));
        if (length == 0) {
            throw system_error_exception(std::source_location::current().function_name(),
                                         "::GetModuleFileNameW(own_module(), path, size)",
                                         GetLastError());
        }
        if (length < path.size()) {
            path.resize(length);
            return path;
        }
        path.resize(path.size() * 2);
    }
}

} // namespace utils
