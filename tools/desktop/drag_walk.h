#pragma once

#include "explorer.h"

#include <functional>
#include <string>

namespace desktop {

/// Takes files out of the drive and brings a folder in, by mouse, from and to a desktop of its own:
/// under the progress dialog, and with the questions where names are taken.
void drag_out_and_in(explorer& window);

} // namespace desktop
