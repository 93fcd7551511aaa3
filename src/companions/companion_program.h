/// What the two companion processes have in common as programs.
#pragma once

namespace companions {

/// How a companion ends.
enum class exit_code : int {
    done = 0,
    failed = 1,
    already_running = 2,
};

/// The window classes by which a running companion is found.
inline constexpr auto session_window_class = L"Quilldeck_Session_Window";
inline constexpr auto tray_window_class = L"Quilldeck_Tray_Window";

/// The body of a companion's entry point, and its guarded top: without arguments it calls `run`;
/// with `--exit` it asks the running companion of `window_class` to exit and waits until that is
/// gone. Whatever fails, an unknown argument too, is shown to the user. Answers the exit code of
/// the process.
int companion_main(const wchar_t* window_class, exit_code (*run)()) noexcept;

/// Shows the exception that is being handled in a message box.
void show_current_failure() noexcept;

} // namespace companions
