#pragma once

#include "extension.h"

#include "com/class_ids.h"
#include "com/guard.h"

#include <shlobj.h>
#include <wrl/client.h>

namespace module {

using Microsoft::WRL::ComPtr;

/// The DLL in this process for as long as this lives, loaded as COM does it.
class loaded_module {
public:
    loaded_module() : handle_(LoadLibraryW(support::extension_path().c_str())) {}

    loaded_module(const loaded_module&) = delete;
    loaded_module& operator=(const loaded_module&) = delete;

    ~loaded_module() { FreeLibrary(handle_); }

    HMODULE handle() const noexcept { return handle_; }

    HRESULT get_class_object(REFCLSID id, REFIID iid, void** result) const {
        return find<HRESULT WINAPI(REFCLSID, REFIID, void**)>("DllGetClassObject")(id, iid, result);
    }

    HRESULT can_unload() const { return find<HRESULT WINAPI()>("DllCanUnloadNow")(); }

    HRESULT register_server() const { return find<HRESULT WINAPI()>("DllRegisterServer")(); }

    ComPtr<IShellFolder2> make_drive() const {
        ComPtr<IClassFactory> factory;
        com::check(get_class_object(com::CLSID_ShellFolderImpl, IID_PPV_ARGS(&factory)));
        ComPtr<IShellFolder2> drive;
        com::check(factory->CreateInstance(nullptr, IID_PPV_ARGS(&drive)));
        return drive;
    }

private:
    template <class Function>
    Function* find(const char* name) const {
        return reinterpret_cast<Function*>(
            reinterpret_cast<void (*)()>(GetProcAddress(handle_, name)));
    }

    HMODULE handle_;
};

inline bool is_loaded() {
    return GetModuleHandleW(support::extension_path().c_str()) != nullptr;
}

} // namespace module
