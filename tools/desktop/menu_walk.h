#pragma once

#include "explorer.h"

#include <string>

namespace desktop {

/// Uses the menu of items by mouse: opens a document in a local program, and gives music to a
/// player, which is this program once more. Throws `std::runtime_error` for what does not work.
void use_item_menu(explorer& window);

/// What this program does as that player: shows the link that it was started with.
void show_played(const std::wstring& link);

} // namespace desktop
