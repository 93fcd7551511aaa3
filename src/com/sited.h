#pragma once

#include "com/guard.h"
#include "com/object.h"

#include <ocidl.h>
#include <shlobj.h>
#include <wrl/client.h>

namespace com {

// Interfaces have no virtual destructor, by COM's own rules; an object is deleted by itself alone.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wnon-virtual-dtor"

/// An entry of `object` that implements `IObjectWithSite`: keeps what the host sets.
class sited : public IObjectWithSite {
public:
    HRESULT STDMETHODCALLTYPE SetSite(IUnknown* pUnkSite) override {
        m_site = pUnkSite;
        return S_OK;
    }

    /// E_FAIL without a site.
    HRESULT STDMETHODCALLTYPE GetSite(REFIID riid, void** ppvSite) override {
        return guard([&]() -> HRESULT {
            cleared(ppvSite);
            return m_site ? m_site->QueryInterface(riid, ppvSite) : E_FAIL;
        });
    }

protected:
    /// The view that the site's browser shows; null when there is none.
    Microsoft::WRL::ComPtr<IShellView> get_active_view() const {
        Microsoft::WRL::ComPtr<IServiceProvider> provider;
        Microsoft::WRL::ComPtr<IShellBrowser> browser;
        Microsoft::WRL::ComPtr<IShellView> view;
        if (m_site && SUCCEEDED(m_site.As(&provider)) &&
            SUCCEEDED(provider->QueryService(SID_SShellBrowser, IID_PPV_ARGS(&browser)))) {
            browser->QueryActiveShellView(&view);
        }
        return view;
    }

private:
    Microsoft::WRL::ComPtr<IUnknown> m_site;
};

#pragma GCC diagnostic pop

template <>
struct detail::entry_traits<sited> {
    using interface_type = sited;

    static bool answers(REFIID iid) noexcept { return IsEqualIID(iid, __uuidof(IObjectWithSite)); }
};

} // namespace com
