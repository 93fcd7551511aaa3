#include "process_census.h"

#include <windows.h>

#include <tlhelp32.h>

#include <algorithm>
#include <cstddef>
#include <stdexcept>
#include <vector>

namespace support {

namespace {

// NtQuerySystemInformation with a class that the headers do not know. GetProcessHandleCount is no
// choice: there are platforms on which it always answers 0.
using query_system_information = LONG(WINAPI*)(ULONG, void*, ULONG, ULONG*);
constexpr ULONG extended_handle_information = 64;
constexpr LONG length_mismatch = static_cast<LONG>(0xC0000004);

struct handle_record {
    void* object;
    ULONG_PTR process;
    ULONG_PTR handle;
    ULONG access;
    USHORT trace;
    USHORT type;
    ULONG attributes;
    ULONG reserved;
};

struct handle_list {
    ULONG_PTR count;
    ULONG_PTR reserved;
    handle_record records[1];
};

std::size_t count_handles() {
    const auto query = reinterpret_cast<query_system_information>(reinterpret_cast<void (*)()>(
        GetProcAddress(GetModuleHandleW(L"ntdll"), "NtQuerySystemInformation")));
    std::vector<std::max_align_t> room(1U << 16U);
    LONG status = 0;
    while ((status = query(extended_handle_information, room.data(),
                           static_cast<ULONG>(room.size() * sizeof(room[0])), nullptr)) ==
           length_mismatch) {
        room.resize(room.size() * 2);
    }
    if (status != 0) {
        throw std::runtime_error("the handles cannot be counted");
    }
    const auto* const list = reinterpret_cast<const handle_list*>(room.data());
    return static_cast<std::size_t>(
        std::count_if(list->records, list->records + list->count, [](const handle_record& record) {
            return record.process == GetCurrentProcessId();
        }));
}

std::size_t count_threads() {
    const HANDLE snapshot = CreateToolhelp32Snapshot(TH32CS_SNAPTHREAD, 0);
    THREADENTRY32 entry{};
    entry.dwSize = sizeof(entry);
    std::size_t count = 0;
    for (BOOL more = Thread32First(snapshot, &entry); more; more = Thread32Next(snapshot, &entry)) {
        count += entry.th32OwnerProcessID == GetCurrentProcessId() ? 1U : 0U;
    }
    CloseHandle(snapshot);
    return count;
}

} // namespace

process_census count_process() {
    return {count_handles(), count_threads()};
}

std::size_t allocated_bytes() {
    // Made before the walk, as it lies in one of the heaps.
    std::vector<HANDLE> heaps(GetProcessHeaps(0, nullptr));
    GetProcessHeaps(static_cast<DWORD>(heaps.size()), heaps.data());
    std::size_t bytes = 0;
    for (HANDLE heap : heaps) {
        HeapLock(heap);
        PROCESS_HEAP_ENTRY entry{};
        while (HeapWalk(heap, &entry)) {
            bytes += (entry.wFlags & PROCESS_HEAP_ENTRY_BUSY) != 0 ? entry.cbData : 0U;
        }
        HeapUnlock(heap);
    }
    return bytes;
}

} // namespace support
