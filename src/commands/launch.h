/// Starts other programs with something of the store.
#pragma once

#include <windows.h>

#include <string>

namespace commands {

/// `text` as one argument of a command line, whatever it holds, by the rules of
/// CommandLineToArgvW.
std::wstring quote_argument(const std::wstring& text);

/// Whether a program may be given `link` in the place of a file: an address of the web without
/// blanks and control characters, so that it is never an option, a second argument or another
/// protocol's command.
bool is_playable_link(const std::wstring& link);

/// Starts `program` with one argument. False when it did not start.
bool start_program(const std::wstring& program, const std::wstring& argument);

/// Shows the platform's dialog that asks which program opens `target`, a path or a link. False when
/// it did not start.
bool ask_for_program(const std::wstring& target);

} // namespace commands
