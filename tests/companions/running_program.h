/// Real processes, and waiting for what they do.
#pragma once

#include "eventually.h"
#include "utils/unique_handle.h"

#include <filesystem>
#include <string>

namespace companions_test {

using support::eventually;

/// The path of a program in the folder of this one.
inline std::filesystem::path beside_us(const wchar_t* program) {
    wchar_t path[MAX_PATH];
    GetModuleFileNameW(nullptr, path, MAX_PATH);
    return std::filesystem::path(path).replace_filename(program);
}

/// A process that is killed at the end of the test if it still runs.
class running_program {
public:
    /// Without a command line the platform makes it of the path, as for the extension.
    explicit running_program(const std::filesystem::path& path, std::wstring command_line = {},
                             const std::filesystem::path& current_folder = L"C:\\") {
        STARTUPINFOW startup{};
        startup.cb = sizeof(startup);
        CreateProcessW(path.c_str(), command_line.empty() ? nullptr : command_line.data(), nullptr,
                       nullptr, FALSE, 0, nullptr, current_folder.c_str(), &startup, &process_);
    }

    ~running_program() {
        kill();
        CloseHandle(process_.hThread);
        CloseHandle(process_.hProcess);
    }

    /// The exit code; `STILL_ACTIVE` when the process does not end.
    DWORD wait() const {
        DWORD code = STILL_ACTIVE;
        eventually(
            [&] { return GetExitCodeProcess(process_.hProcess, &code) && code != STILL_ACTIVE; });
        return code;
    }

    void kill() const {
        TerminateProcess(process_.hProcess, 99);
        WaitForSingleObject(process_.hProcess, 20'000);
    }

    /// A top-level window of the process, or null.
    HWND window(const wchar_t* class_name) const {
        for (HWND each = nullptr; (each = FindWindowExW(nullptr, each, class_name, nullptr));) {
            DWORD owner = 0;
            GetWindowThreadProcessId(each, &owner);
            if (owner == process_.dwProcessId) {
                return each;
            }
        }
        return nullptr;
    }

private:
    PROCESS_INFORMATION process_{};
};

/// Starts the companion with `--exit` and answers its exit code.
inline DWORD ask_to_exit(const wchar_t* program) {
    return running_program(beside_us(program), std::wstring(program) + L" --exit").wait();
}

} // namespace companions_test
