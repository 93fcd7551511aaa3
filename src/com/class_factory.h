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

/// The class object of one class. It refuses aggregation.
class class_factory final : public object<class_factory, IClassFactory> {
public:
    explicit class_factory(create_function create) noexcept : create_(create) {}

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

} // namespace com
