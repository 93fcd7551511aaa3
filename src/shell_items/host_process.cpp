#include "shell_items/host_process.h"

#include "utils/unique_handle.h"

#include <psapi.h>

#include <string_view>

namespace shell {

namespace {

struct program {
    const wchar_t* name;
    process_kind kind;
};

constexpr program programs[] = {
    {L"explorer.exe", process_file_manager},
    {L"winword.exe", process_word},
    {L"Quilldeck_Session.exe", process_session},
    {L"Quilldeck_Session64.exe", process_session},
};

} // namespace

process_kind get_process_kind(DWORD process_id) noexcept {
    const utils::unique_handle process(
        OpenProcess(PROCESS_QUERY_INFORMATION | PROCESS_VM_READ, FALSE, process_id));
    HMODULE executable = nullptr;
    DWORD needed = 0;
    wchar_t path[MAX_PATH];
    if (!process || !EnumProcessModules(process.get(), &executable, sizeof(HMODULE), &needed)) {
        return process_other;
    }
    const std::wstring_view whole(path,
                                  GetModuleFileNameExW(process.get(), executable, path, MAX_PATH));
    const std::wstring_view name = whole.substr(whole.find_last_of(L"\\/") + 1);
    for (const program& known : programs) {
        if (CompareStringOrdinal(name.data(), static_cast<int>(name.size()), known.name, -1,
                                 TRUE) == CSTR_EQUAL) {
            return known.kind;
        }
    }
    return process_other;
}

bool is_file_manager() noexcept {
    // The shell asks for each item, and no process changes its program.
    static const process_kind own_kind = get_process_kind(GetCurrentProcessId());
    return own_kind == process_file_manager;
}

} // namespace shell
