/// Owners of what crosses the COM boundary.
#pragma once

#include "com/guard.h"

#include <oleauto.h>
#include <shlwapi.h>
#include <shtypes.h>

#include <memory>
#include <string>

namespace com {

struct task_memory_deleter {
    void operator()(void* memory) const noexcept { ::CoTaskMemFree(memory); }
};

/// Owns memory of the COM task allocator, which may be given to a caller with `release()`.
template <class T>
using task_ptr = std::unique_ptr<T, task_memory_deleter>;

/// Owns an item identifier list. Its length is in its bytes.
using unique_id_list = task_ptr<ITEMIDLIST>;

/// A copy of the text for a caller to free. Throws `status_exception`.
inline task_ptr<wchar_t> duplicate_string(const std::wstring& text) {
    wchar_t* copy = nullptr;
    check(::SHStrDupW(text.c_str(), &copy));
    return task_ptr<wchar_t>(copy);
}

struct bstr_deleter {
    void operator()(wchar_t* text) const noexcept { ::SysFreeString(text); }
};

/// Owns a BSTR.
using unique_bstr = std::unique_ptr<wchar_t, bstr_deleter>;

/// Owns the content of a VARIANT.
class variant {
public:
    variant() noexcept { ::VariantInit(&value_); }

    ~variant() { ::VariantClear(&value_); }

    variant(const variant&) = delete;
    variant& operator=(const variant&) = delete;

    VARIANT& get() noexcept { return value_; }

    /// Gives the content to the caller and is empty afterwards.
    VARIANT release() noexcept {
        const VARIANT given = value_;
        ::VariantInit(&value_);
        return given;
    }

private:
    VARIANT value_;
};

} // namespace com
