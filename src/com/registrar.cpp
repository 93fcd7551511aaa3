#include "com/registrar.h"

#include "com/guard.h"
#include "utils/module.h"

#include <boost/algorithm/string/replace.hpp>
#include <objbase.h>

#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wnon-virtual-dtor"

// As atl.dll has it; no header declares it.
MIDL_INTERFACE("44ec053b-400f-11d0-9dcd-00a0c90391d3")
IRegistrar : public IUnknown {
    virtual HRESULT STDMETHODCALLTYPE AddReplacement(const wchar_t* name, const wchar_t* value) = 0;
    virtual HRESULT STDMETHODCALLTYPE ClearReplacements() = 0;
    virtual HRESULT STDMETHODCALLTYPE ResourceRegisterSz(const wchar_t* module, const wchar_t* name,
                                                         const wchar_t* type) = 0;
    virtual HRESULT STDMETHODCALLTYPE ResourceUnregisterSz(
        const wchar_t* module, const wchar_t* name, const wchar_t* type) = 0;
    virtual HRESULT STDMETHODCALLTYPE FileRegister(const wchar_t* file) = 0;
    virtual HRESULT STDMETHODCALLTYPE FileUnregister(const wchar_t* file) = 0;
    virtual HRESULT STDMETHODCALLTYPE StringRegister(const wchar_t* script) = 0;
    virtual HRESULT STDMETHODCALLTYPE StringUnregister(const wchar_t* script) = 0;
    virtual HRESULT STDMETHODCALLTYPE ResourceRegister(const wchar_t* module, UINT id,
                                                       const wchar_t* type) = 0;
    virtual HRESULT STDMETHODCALLTYPE ResourceUnregister(const wchar_t* module, UINT id,
                                                         const wchar_t* type) = 0;
};

#pragma GCC diagnostic pop

__CRT_UUID_DECL(IRegistrar, 0x44ec053b, 0x400f, 0x11d0, 0x9d, 0xcd, 0x00, 0xa0, 0xc9, 0x03, 0x91,
                0xd3)

namespace com {

namespace {

constexpr CLSID CLSID_Registrar = {
    0x44ec053a, 0x400f, 0x11d0, {0x9d, 0xcd, 0x00, 0xa0, 0xc9, 0x03, 0x91, 0xd3}};
constexpr auto script_type = L"REGISTRY";

} // namespace

registrar::registrar() : module_path_(utils::own_module_path()) {
    check(::CoCreateInstance(CLSID_Registrar, nullptr, CLSCTX_INPROC_SERVER,
                             IID_PPV_ARGS(&registrar_)));
    replace(L"MODULE", module_path_);
}

registrar::~registrar() = default;

void registrar::replace(const wchar_t* name, const std::wstring& value) {
    check(registrar_->AddReplacement(name, boost::replace_all_copy(value, L"'", L"''").c_str()));
}

void registrar::run(UINT script, registration direction) {
    check(direction == registration::add
              ? registrar_->ResourceRegister(module_path_.c_str(), script, script_type)
              : registrar_->ResourceUnregister(module_path_.c_str(), script, script_type));
}

} // namespace com
