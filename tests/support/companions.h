#pragma once

#include "utils/unique_handle.h"

#include <windows.h>

#include <tlhelp32.h>

namespace support {

/// Ends a companion as a crash would. The prefix is this program's own, so any of its name is
/// meant.
inline void kill_companion(const wchar_t* program) {
    const utils::unique_handle processes(CreateToolhelp32Snapshot(TH32CS_SNAPPROCESS, 0));
    PROCESSENTRY32W entry{};
    entry.dwSize = sizeof(entry);
    for (BOOL more = Process32FirstW(processes.get(), &entry); more;
         more = Process32NextW(processes.get(), &entry)) {
        if (_wcsicmp(entry.szExeFile, program) == 0) {
            const utils::unique_handle process(
                OpenProcess(PROCESS_TERMINATE | SYNCHRONIZE, FALSE, entry.th32ProcessID));
            TerminateProcess(process.get(), 1);
            WaitForSingleObject(process.get(), INFINITE);
        }
    }
}

} // namespace support
