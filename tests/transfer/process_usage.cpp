#include "process_usage.h"

#include "utils/unique_handle.h"

#include <windows.h>

#include <tlhelp32.h>

namespace transfer_test {

process_usage read_process_usage() {
    process_usage found;
    GetProcessHandleCount(GetCurrentProcess(), &found.handles);
    const utils::unique_handle snapshot(CreateToolhelp32Snapshot(TH32CS_SNAPTHREAD, 0));
    THREADENTRY32 entry{};
    entry.dwSize = sizeof(entry);
    for (BOOL more = Thread32First(snapshot.get(), &entry); more != FALSE;
         more = Thread32Next(snapshot.get(), &entry)) {
        found.threads += entry.th32OwnerProcessID == GetCurrentProcessId() ? 1UL : 0UL;
    }
    return found;
}

process_usage wait_for_threads(unsigned long most_threads) {
    constexpr int most_looks = 100;
    process_usage found = read_process_usage();
    for (int look = 0; look < most_looks && found.threads > most_threads; ++look) {
        Sleep(100);
        found = read_process_usage();
    }
    return found;
}

} // namespace transfer_test
