#pragma once

#include "explorer.h"

namespace desktop {

/// Looks at the properties of a file, of a folder and of the drive, and shares a folder and ends
/// that again, by mouse and keyboard. Throws `std::runtime_error` for what does not work.
void use_properties(explorer& window);

} // namespace desktop
