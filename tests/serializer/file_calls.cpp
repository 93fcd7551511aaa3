#include "file_calls.h"

#include <windows.h>

#include <atomic>
#include <utility>

namespace {

std::atomic<int> armed_number;
std::atomic<int> calls_made;
std::atomic<support::mishap> armed_mishap;
std::function<void()> sleep_action;

/// Counts a call; whether it fails.
bool next_call_fails() {
    if (armed_number == 0 || ++calls_made != armed_number) {
        return false;
    }
    if (armed_mishap == support::mishap::crash) {
        TerminateProcess(GetCurrentProcess(), 1);
    }
    SetLastError(ERROR_DISK_FULL);
    return true;
}

BOOL failure_of(BOOL) {
    return FALSE;
}

HANDLE failure_of(HANDLE) {
    return INVALID_HANDLE_VALUE;
}

/// Stands in an import slot of this program for as long as it runs.
template <class Function>
void put(Function* slot, Function function) {
    DWORD protection = 0;
    VirtualProtect(static_cast<void*>(slot), sizeof(*slot), PAGE_READWRITE, &protection);
    *slot = function;
}

template <auto Slot>
struct caught;

template <class Result, class... Args, Result(WINAPI** Slot)(Args...)>
struct caught<Slot> {
    static inline Result(WINAPI* real)(Args...) = nullptr;

    static Result WINAPI call(Args... args) {
        return next_call_fails() ? failure_of(Result{}) : real(args...);
    }

    static void install() {
        real = *Slot;
        put(Slot, &call);
    }
};

template <auto... Slots>
void install() {
    (caught<Slots>::install(), ...);
}

} // namespace

// The slots, as the import libraries name them.
extern "C" {
extern decltype(&CreateFileW) __imp_CreateFileW;
extern decltype(&WriteFile) __imp_WriteFile;
extern decltype(&FlushFileBuffers) __imp_FlushFileBuffers;
extern decltype(&DeleteFileW) __imp_DeleteFileW;
extern decltype(&CreateHardLinkW) __imp_CreateHardLinkW;
extern decltype(&MoveFileExW) __imp_MoveFileExW;
extern decltype(&CreateDirectoryW) __imp_CreateDirectoryW;
extern decltype(&GetFileAttributesW) __imp_GetFileAttributesW;
extern decltype(&Sleep) __imp_Sleep;
}

namespace support {

void arm_file_calls(int number, mishap what) {
    static const bool installed = [] {
        install<&__imp_CreateFileW, &__imp_WriteFile, &__imp_FlushFileBuffers, &__imp_DeleteFileW,
                &__imp_CreateHardLinkW, &__imp_MoveFileExW, &__imp_CreateDirectoryW>();
        return true;
    }();
    static_cast<void>(installed);
    armed_mishap = what;
    calls_made = 0;
    armed_number = number;
}

int disarm_file_calls() {
    armed_number = 0;
    return calls_made;
}

void refuse_attributes(bool refuse) {
    static const auto real = __imp_GetFileAttributesW;
    const auto refusal = [](LPCWSTR) -> DWORD {
        SetLastError(ERROR_ACCESS_DENIED);
        return INVALID_FILE_ATTRIBUTES;
    };
    put(&__imp_GetFileAttributesW, refuse ? refusal : real);
}

void before_next_sleep(std::function<void()> action) {
    static const auto real = __imp_Sleep;
    sleep_action = std::move(action);
    put(
        &__imp_Sleep, +[](DWORD milliseconds) {
            if (const auto next = std::exchange(sleep_action, nullptr)) {
                next();
            }
            real(milliseconds);
        });
}

} // namespace support
