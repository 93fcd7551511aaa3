/// The classes that others may ask this DLL for.
#pragma once

#include "com/class_factory.h"
#include "com/registrar.h"

#include <span>

namespace module {

/// One class: its identifier, its class object, and what it writes to the registry. `update` gets
/// an interpreter that knows the values common to all scripts, and throws `status_exception` or
/// what its own work throws; null for a class that only those find who have this DLL loaded.
struct object_map_entry {
    const CLSID& id;
    com::class_factory factory;
    void (*update)(com::registrar& scripts, com::registration direction);
};

std::span<object_map_entry> object_map() noexcept;

} // namespace module
