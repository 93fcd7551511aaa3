#pragma once

#include "com/registrar.h"

namespace module {

/// Registers the application, all classes of the object map and the type library, in this order, or
/// takes their entries away again in the same order. Ends at the first failure and answers it. The
/// calling thread is in an apartment.
HRESULT update_registry(com::registration direction) noexcept;

} // namespace module
