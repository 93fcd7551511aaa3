/// Music and video of the store, played by local programs from links.
#pragma once

#include "shell_items/seams.h"

#include <windows.h>

#include <optional>
#include <string>
#include <vector>

namespace commands {

using playlist_entry = shell::played_file;

/// The text of an extended M3U playlist: a header line, then two lines and an empty one for each
/// entry, parted by line feeds. A title's control characters become blanks, so that it stays on its
/// line.
std::wstring playlist_text(const std::vector<playlist_entry>& entries);

/// Writes a playlist in the code page of the system, which players of this format expect, to a new
/// file of `folder`: `base` with the extension ".m3u", or the first of "(1)", "(2)" and so on
/// behind `base` that is free. Answers its path; nothing when it cannot be written, and then no
/// file stays.
std::optional<std::wstring> write_playlist(const std::wstring& folder, const std::wstring& base,
                                           const std::vector<playlist_entry>& entries);

/// Plays `entries`. One is given to the program of `key`, a class, or else of its title; with `ask`
/// the user chooses the program. Several go through a playlist, which is named `base`, or
/// "QuilldeckPlayAll" when no local file can have that name. Entries whose link no program may be
/// given are left out. What fails has no effect.
void play(std::vector<playlist_entry> entries, HKEY key, const std::wstring& base, bool ask);

} // namespace commands
