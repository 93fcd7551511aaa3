/// The boundary between C++ and COM: inside, failures are exceptions and results are values;
/// outside, there are status codes and out-parameters only.
#pragma once

#include <windows.h>

#include <type_traits>
#include <utility>

namespace com {

/// A status code on its way to the boundary.
class status_exception {
public:
    explicit status_exception(HRESULT status) noexcept : status_(status) {}

    HRESULT status() const noexcept { return status_; }

private:
    HRESULT status_;
};

/// Throws `status_exception` for a status code that tells of a failure.
inline void check(HRESULT status) {
    if (FAILED(status)) {
        throw status_exception(status);
    }
}

/// The status code of the exception that is being handled: its own for a `status_exception`,
/// E_OUTOFMEMORY for exhausted memory, `otherwise` for all others, those of the items among them.
/// To be called in a handler only.
HRESULT status_of_current_exception(HRESULT otherwise = E_FAIL) noexcept;

/// Runs the body of a COM method. A body without a result gives S_OK; one that returns a status
/// code gives that; an exception of any kind is translated, to `otherwise` if it has no status of
/// its own.
template <class Body>
HRESULT guard(HRESULT otherwise, Body&& body) noexcept {
    try {
        if constexpr (std::is_void_v<std::invoke_result_t<Body>>) {
            std::forward<Body>(body)();
            return S_OK;
        } else {
            return std::forward<Body>(body)();
        }
    } catch (...) {
        return status_of_current_exception(otherwise);
    }
}

/// The same with E_FAIL.
template <class Body>
HRESULT guard(Body&& body) noexcept {
    return guard(E_FAIL, std::forward<Body>(body));
}

/// What a pointer argument points at. Throws E_POINTER for null.
template <class T>
T& required(T* pointer) {
    if (!pointer) {
        throw status_exception(E_POINTER);
    }
    return *pointer;
}

/// An out-parameter, cleared, so that a caller finds nothing in it after a failure. Throws
/// E_POINTER for null.
template <class T>
T& cleared(T* pointer) {
    T& result = required(pointer);
    result = T{};
    return result;
}

} // namespace com
