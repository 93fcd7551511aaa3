#pragma once

#include "com/clipboard_formats.h"
#include "com/registrar.h"

#include <windows.h>

#include <objidl.h>
#include <wrl/client.h>

namespace module {

/// The module object, one in a process: the state that the DLL has as a whole. It is made when the
/// DLL loads, which registers the clipboard formats and joins the layers of the shell extension;
/// neither its construction nor that of anything else in the DLL starts a thread or opens a file.
class CQuilldeckModule {
public:
    CQuilldeckModule() noexcept;
    CQuilldeckModule(const CQuilldeckModule&) = delete;
    CQuilldeckModule& operator=(const CQuilldeckModule&) = delete;
    virtual ~CQuilldeckModule();

    /// One more reason to keep the DLL in its process; answers how many there are. Any thread.
    virtual LONG Lock() noexcept;
    /// One less.
    virtual LONG Unlock() noexcept;

    /// Work at the module's end that is not the destructor's; there is none.
    virtual void Term() noexcept {}

    /// The process's table of interfaces that all its apartments may use, with a reference for the
    /// caller. It is made at the first call; any thread.
    virtual HRESULT GetGITPtr(IGlobalInterfaceTable** table) noexcept;
    /// What all registrar scripts may name beside their own values.
    virtual void AddCommonRGSReplacements(com::registrar& scripts);

    LONG GetLockCount() const noexcept;

    const com::clipboard_formats& formats() const noexcept { return m_formats; }

private:
    const com::clipboard_formats& m_formats;
    IGlobalInterfaceTable* m_git = nullptr;
};

extern CQuilldeckModule the_module;

} // namespace module
