#include "commands/invocation.h"

#include <cstdint>
#include <cstring>

namespace commands {

namespace {

/// CMIC_MASK_UNICODE, whose own definition names another header's.
constexpr DWORD unicode_mask = 0x4000;

std::wstring from_system_code_page(const char* text) {
    const auto length = static_cast<int>(std::strlen(text));
    std::wstring wide(static_cast<std::size_t>(length), L'\0');
    const int size = MultiByteToWideChar(CP_ACP, 0, text, length, wide.data(), length);
    wide.resize(static_cast<std::size_t>(size));
    return wide;
}

} // namespace

invocation read_invocation(const CMINVOKECOMMANDINFO& info) {
    if (info.cbSize >= sizeof(CMINVOKECOMMANDINFOEX) && (info.fMask & unicode_mask) != 0) {
        const auto* verb = reinterpret_cast<const CMINVOKECOMMANDINFOEX&>(info).lpVerbW;
        if (!IS_INTRESOURCE(verb)) {
            return {verb, 0};
        }
    }
    if (!IS_INTRESOURCE(info.lpVerb)) {
        return {from_system_code_page(info.lpVerb), 0};
    }
    return {{}, static_cast<UINT>(reinterpret_cast<std::uintptr_t>(info.lpVerb))};
}

} // namespace commands
