#include "vfs_quilldeck/session/companion_process.h"

#include "utils/unique_handle.h"
#include "vfs_quilldeck/session/session_objects.h"

#include <array>
#include <string>

namespace vfs_quilldeck {

namespace {

constexpr int start_polls = 150;
constexpr DWORD poll_milliseconds = 100;

void start_process(HMODULE module, const std::wstring& file_name) {
    std::array<wchar_t, MAX_PATH> path{};
    const DWORD length = GetModuleFileNameW(module, path.data(), static_cast<DWORD>(path.size()));
    if (length == 0 || length == path.size()) {
        throw std::wstring(L"Error getting module name");
    }
    std::wstring program(path.data(), length);
    program.erase(program.rfind(L'\\') + 1);
    program += file_name;
    STARTUPINFOW startup{};
    startup.cb = sizeof(startup);
    PROCESS_INFORMATION process{};
    if (!CreateProcessW(program.c_str(), nullptr, nullptr, nullptr, FALSE, 0, nullptr, nullptr,
                        &startup, &process)) {
        throw L"Error creating process " + file_name;
    }
    // A companion lives by itself: its object, and not its handle, tells that it runs.
    CloseHandle(process.hThread);
    CloseHandle(process.hProcess);
}

bool tray_runs() {
    return static_cast<bool>(utils::unique_handle(OpenMutexW(SYNCHRONIZE, FALSE, tray_mutex_name)));
}

bool session_runs() {
    return static_cast<bool>(
        utils::unique_handle(OpenEventW(EVENT_ALL_ACCESS, FALSE, session_event_name)));
}

bool ensure_companion(HMODULE module, bool start, bool (*runs)(), const wchar_t* program,
                      const wchar_t* failure) {
    if (runs()) {
        return true;
    }
    if (!start) {
        return false;
    }
    start_process(module, program);
    for (int poll = 0; poll < start_polls; ++poll) {
        Sleep(poll_milliseconds);
        if (runs()) {
            return true;
        }
    }
    throw std::wstring(failure);
}

} // namespace

bool ensure_tray(HMODULE module, bool start) {
    return ensure_companion(module, start, &tray_runs, tray_program,
                            L"Error waiting for tray icon to start");
}

bool ensure_session(HMODULE module, bool start) {
    return ensure_companion(module, start, &session_runs, session_program,
                            L"Error waiting for session start");
}

} // namespace vfs_quilldeck
