/// Class objects.
#pragma once

#include "com/guard.h"
#include "com/object.h"

namespace com {

/// Makes an object and queries it: what a class object needs to know of a class.
using create_function = HRESULT (*)(REFIID iid, void** result) noexcept;

/// The `create_function` of a class whose constructor takes nothing.
template <class Class>
HRESULT create(REFIID iid, void** result) noexcept {
    return guard([&] {
        cleared(result);
        return make<Class>()->QueryInterface(iid, result);
    });
}

#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wnon-virtual-dtor"

/// The class object of one class, which refuses aggregation. It is a constant of the module:
/// handing it out makes nothing, and so needs no lock and cannot fail. References on it count as
/// locks on the module.
class class_factory final : public IClassFactory {
public:
    constexpr explicit class_factory(create_function create) noexcept : create_(create) {}

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** result) override {
        return guard([&] {
            cleared(result);
            if (!IsEqualIID(iid, __uuidof(IUnknown)) && !IsEqualIID(iid, __uuidof(IClassFactory))) {
                return E_NOINTERFACE;
            }
            AddRef();
            *result = static_cast<IClassFactory*>(this);
            return S_OK;
        });
    }

    ULONG STDMETHODCALLTYPE AddRef() override {
        module_lock::add();
        return 2;
    }

    ULONG STDMETHODCALLTYPE Release() override {
        module_lock::release();
        return 1;
    }

    HRESULT STDMETHODCALLTYPE CreateInstance(IUnknown* outer, REFIID iid, void** result) override {
        return guard([&] {
            cleared(result);
            return outer ? CLASS_E_NOAGGREGATION : create_(iid, result);
        });
    }

    HRESULT STDMETHODCALLTYPE LockServer(BOOL lock) override {
        lock ? module_lock::add() : module_lock::release();
        return S_OK;
    }

private:
    create_function create_;
};

#pragma GCC diagnostic pop

} // namespace com
