#include "com/class_factory.h"

#include <gtest/gtest.h>
#include <ocidl.h>
#include <shlobj.h>

#include <new>
#include <stdexcept>

namespace com {

namespace {

using Microsoft::WRL::ComPtr;

/// What the next probe throws from its constructor.
void (*fault)() = nullptr;

class probe final : public object<probe, chain<IPersistFolder, IPersist>, IObjectWithSite> {
public:
    probe() {
        if (fault) {
            fault();
        }
    }

    HRESULT STDMETHODCALLTYPE GetClassID(CLSID* id) override {
        return guard([&] { cleared(id); });
    }

    HRESULT STDMETHODCALLTYPE Initialize(LPCITEMIDLIST) override { return S_FALSE; }

    HRESULT STDMETHODCALLTYPE SetSite(IUnknown*) override { return S_OK; }

    HRESULT STDMETHODCALLTYPE GetSite(REFIID, void**) override { return E_NOTIMPL; }
};

constinit class_factory probes{&create<probe>};

/// Nothing lives before and after each case.
class com_objects : public testing::Test {
protected:
    com_objects() { EXPECT_EQ(module_lock::count(), 0); }

    ~com_objects() override {
        fault = nullptr;
        EXPECT_EQ(module_lock::count(), 0);
    }
};

} // namespace

TEST_F(com_objects, has_one_identity_and_answers_for_ancestors) {
    ComPtr<IPersistFolder> folder;
    ASSERT_EQ(probes.CreateInstance(nullptr, IID_PPV_ARGS(&folder)), S_OK);
    EXPECT_EQ(module_lock::count(), 1);
    ComPtr<IPersist> persist;
    ComPtr<IObjectWithSite> site;
    ASSERT_EQ(folder.As(&persist), S_OK);
    ASSERT_EQ(persist.As(&site), S_OK);
    EXPECT_EQ(persist.Get(), folder.Get());

    ComPtr<IUnknown> first;
    ComPtr<IUnknown> second;
    ASSERT_EQ(folder.As(&first), S_OK);
    ASSERT_EQ(site.As(&second), S_OK);
    EXPECT_EQ(first.Get(), second.Get());
    EXPECT_EQ(first.Get(), static_cast<IUnknown*>(folder.Get()));

    void* none = this;
    EXPECT_EQ(site->QueryInterface(IID_IPersistFolder2, &none), E_NOINTERFACE);
    EXPECT_EQ(none, nullptr);
    EXPECT_EQ(site->QueryInterface(IID_IUnknown, nullptr), E_POINTER);
    EXPECT_EQ(folder->GetClassID(nullptr), E_POINTER);
}

TEST_F(com_objects, what_a_constructor_throws_becomes_a_status) {
    const std::pair<void (*)(), HRESULT> cases[] = {
        {[] { throw status_exception(E_ACCESSDENIED); }, E_ACCESSDENIED},
        {[] { throw std::bad_alloc(); }, E_OUTOFMEMORY},
        {[] { throw std::runtime_error("any"); }, E_FAIL},
        {[] { throw std::wstring(L"any"); }, E_FAIL},
    };
    for (const auto& [throwing, status] : cases) {
        fault = throwing;
        void* none = this;
        EXPECT_EQ(probes.CreateInstance(nullptr, IID_IUnknown, &none), status);
        EXPECT_EQ(none, nullptr);
        EXPECT_EQ(module_lock::count(), 0);
    }
}

} // namespace com
