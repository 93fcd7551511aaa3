/// The menu that a right click on an item of the drive opens.
#pragma once

#include "explorer.h"

#include <string>
#include <vector>

namespace desktop {

/// What stands in the menu of an item, in its order; "-" is a line. `path` leads to the item from
/// the drive's root. The thread is in an apartment.
std::vector<std::wstring> item_menu_of(const std::wstring& path);

/// Right-clicks on the item `name` of the open folder and waits for the menu.
void open_item_menu(const explorer& window, const std::wstring& name);

/// The same, and clicks on the entry `entry`. `folder` is the open folder's path from the drive.
void choose_from_item_menu(const explorer& window, const std::wstring& folder,
                           const std::wstring& name, const std::wstring& entry);

} // namespace desktop
