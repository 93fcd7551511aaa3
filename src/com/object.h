/// The base of all COM objects of this module.
#pragma once

#include "com/module_lock.h"

#include <unknwn.h>
#include <wrl/client.h>

#include <atomic>
#include <cstring>
#include <tuple>
#include <type_traits>
#include <utility>

namespace com {

/// One entry of an object's interface list that answers for its ancestors too: the class derives
/// from `Interface`, and is found under the identifiers of `Ancestors` as well.
template <class Interface, class... Ancestors>
struct chain {
    static_assert((std::is_base_of_v<Ancestors, Interface> && ...));
};

namespace detail {

template <class Entry>
struct entry_traits {
    using interface_type = Entry;

    static bool answers(REFIID iid) noexcept { return IsEqualIID(iid, __uuidof(Entry)); }
};

template <class Interface, class... Ancestors>
struct entry_traits<chain<Interface, Ancestors...>> {
    using interface_type = Interface;

    static bool answers(REFIID iid) noexcept {
        return IsEqualIID(iid, __uuidof(Interface)) ||
               (IsEqualIID(iid, __uuidof(Ancestors)) || ...);
    }
};

} // namespace detail

// Interfaces have no virtual destructor, by COM's own rules; an object is deleted by itself alone.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wnon-virtual-dtor"

/// A reference-counted COM object that implements `Entries`, interfaces or `chain`s of them, found
/// in this order; the first one is the object's identity. `Class` is the class that derives from
/// it. The object begins with one reference, is deleted at its last release, counts as a lock on
/// the module for as long as it lives, and cannot be aggregated. The counting is safe on any
/// thread.
template <class Class, class... Entries>
class object : public detail::entry_traits<Entries>::interface_type... {
public:
    object(const object&) = delete;
    object& operator=(const object&) = delete;

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** result) override {
        if (!result) {
            return E_POINTER;
        }
        // A copy: the platform's proxies name interfaces by what lies at any address in their
        // tables, where no reference may lead.
        IID wanted;
        std::memcpy(&wanted, &iid, sizeof(wanted));
        *result = find(wanted);
        if (!*result) {
            return E_NOINTERFACE;
        }
        AddRef();
        return S_OK;
    }

    ULONG STDMETHODCALLTYPE AddRef() override { return references_.fetch_add(1) + 1; }

    ULONG STDMETHODCALLTYPE Release() override {
        const ULONG left = references_.fetch_sub(1) - 1;
        if (left == 0) {
            delete this;
        }
        return left;
    }

protected:
    object() noexcept { module_lock::add(); }

    virtual ~object() { module_lock::release(); }

private:
    using identity = typename detail::entry_traits<
        std::tuple_element_t<0, std::tuple<Entries...>>>::interface_type;

    void* find(REFIID iid) noexcept {
        void* found = nullptr;
        if (IsEqualIID(iid, __uuidof(IUnknown))) {
            found = static_cast<identity*>(this);
        }
        static_cast<void>(((found || (found = find_entry<Entries>(iid))) || ...));
        return found;
    }

    template <class Entry>
    void* find_entry(REFIID iid) noexcept {
        using traits = detail::entry_traits<Entry>;
        return traits::answers(iid) ? static_cast<typename traits::interface_type*>(this) : nullptr;
    }

    std::atomic<ULONG> references_ = 1;
};

#pragma GCC diagnostic pop

/// A new object, owned by the pointer. Throws what its constructor throws.
template <class Class, class... Arguments>
Microsoft::WRL::ComPtr<Class> make(Arguments&&... arguments) {
    Microsoft::WRL::ComPtr<Class> made;
    // The first reference is the pointer's own. The header's `Attach` would add another one.
    *made.GetAddressOf() = new Class(std::forward<Arguments>(arguments)...);
    return made;
}

} // namespace com
