/// What the platform calls in this DLL. exports.def names it.
#include "com/guard.h"
#include "module/object_map.h"
#include "module/quilldeck_module.h"
#include "module/registration.h"

#include <windows.h>

#include <olectl.h>

#include <algorithm>

STDAPI DllGetClassObject(REFCLSID id, REFIID iid, void** result) {
    return com::guard([&] {
        com::cleared(result);
        const auto classes = module::object_map();
        const auto found = std::ranges::find_if(
            classes, [&](const module::object_map_entry& entry) { return entry.id == id; });
        return found == classes.end() ? CLASS_E_CLASSNOTAVAILABLE
                                      : found->factory.QueryInterface(iid, result);
    });
}

STDAPI DllCanUnloadNow() {
    return module::the_module.GetLockCount() == 0 ? S_OK : S_FALSE;
}

STDAPI DllRegisterServer() {
    return module::update_registry(com::registration::add);
}

STDAPI DllUnregisterServer() {
    return module::update_registry(com::registration::remove);
}
