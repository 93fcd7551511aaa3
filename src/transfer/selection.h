#pragma once

#include "shell_items/selection.h"

namespace transfer {

/// As a worker gets it.
using shell::selection;

} // namespace transfer
