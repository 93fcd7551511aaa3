#include "companions/companion_program.h"

#include "companions/last_error.h"
#include "companions/local_free.h"
#include "utils/narrow.h"
#include "utils/unique_handle.h"

#include <shellapi.h>

#include <array>
#include <exception>
#include <memory>
#include <string_view>

namespace companions {

namespace {

constexpr DWORD exit_patience_milliseconds = 10'000;

/// Whether the command line is the program alone. The extension starts the companions without a
/// command line, and the platform then hands them the program's path without quotes: in a folder
/// with a blank in its name the path's tail would pass for an argument.
bool is_program_alone(std::wstring_view command_line) {
    std::array<wchar_t, 32'768> path{};
    const DWORD length = GetModuleFileNameW(nullptr, path.data(), static_cast<DWORD>(path.size()));
    return command_line == std::wstring_view(path.data(), length);
}

bool exit_is_asked() {
    const wchar_t* const command_line = GetCommandLineW();
    if (is_program_alone(command_line)) {
        return false;
    }
    int count = 0;
    const std::unique_ptr<LPWSTR, local_free> arguments(CommandLineToArgvW(command_line, &count));
    if (!arguments) {
        raise_last_error("::CommandLineToArgvW(command_line, &count)");
    }
    if (count <= 1) {
        return false;
    }
    if (count == 2 && arguments.get()[1] == std::wstring_view(L"--exit")) {
        return true;
    }
    throw utils::utils_exception(std::source_location::current().function_name(),
                                 "unknown argument; the only one is --exit");
}

/// The folder in which the starter was would stay in use for as long as we run, and a drive under
/// it could not be taken out.
void leave_current_folder() {
    std::array<wchar_t, MAX_PATH> folder{};
    if (GetSystemDirectoryW(folder.data(), static_cast<UINT>(folder.size())) == 0 ||
        !SetCurrentDirectoryW(folder.data())) {
        raise_last_error("::SetCurrentDirectoryW(system_directory)");
    }
}

exit_code end_running(const wchar_t* window_class) {
    const HWND window = FindWindowW(window_class, nullptr);
    if (!window) {
        return exit_code::done;
    }
    DWORD process_id = 0;
    GetWindowThreadProcessId(window, &process_id);
    const utils::unique_handle process(OpenProcess(SYNCHRONIZE, FALSE, process_id));
    if (!process) {
        // It went by itself in the meantime, unless its window is still there.
        return IsWindow(window) ? exit_code::failed : exit_code::done;
    }
    PostMessageW(window, WM_CLOSE, 0, 0);
    return WaitForSingleObject(process.get(), exit_patience_milliseconds) == WAIT_OBJECT_0
               ? exit_code::done
               : exit_code::failed;
}

} // namespace

int companion_main(const wchar_t* window_class, exit_code (*run)()) noexcept {
    try {
        leave_current_folder();
        return static_cast<int>(exit_is_asked() ? end_running(window_class) : run());
    } catch (...) {
        show_current_failure();
        return static_cast<int>(exit_code::failed);
    }
}

void show_current_failure() noexcept {
    const auto show = [](const char* text) {
        MessageBoxA(nullptr, text, "Quilldeck", MB_OK | MB_ICONERROR);
    };
    try {
        try {
            throw;
        } catch (const std::exception& failure) {
            show(utils::narrow_message(failure).c_str());
        }
    } catch (...) {
        show("Internal error");
    }
}

} // namespace companions
