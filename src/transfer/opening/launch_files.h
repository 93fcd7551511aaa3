#pragma once

#include <windows.h>

#include <filesystem>
#include <vector>

namespace transfer {

/// Opens local files of one folder. With `open_with` and one file the user chooses the program.
/// Otherwise the class `verb_key` opens them, or that of each where it is null: several files of
/// one extension together, where the class has a drop target for its verb and that can be made, and
/// else one by one.
/// Tells the user of each that no program could be started for; `owner` is the parent of that box.
/// To be called in a single-threaded apartment.
void launch_files(const std::vector<std::filesystem::path>& files, HWND owner, HKEY verb_key,
                  bool open_with);

} // namespace transfer
