#pragma once

#include "utils/unique_handle.h"

#include <objidl.h>
#include <shtypes.h>

#include <vector>

namespace local {

/// The keys under which extensions are registered for a local item, from the special to the
/// general: its class, the base of its class, and what all files and folders have. Asks the
/// platform's association service; where that has no answer, the registry. A key that is missing is
/// left out. Throws a status.
std::vector<utils::unique_registry_key> class_keys_of(const ITEMIDLIST* item);

} // namespace local
