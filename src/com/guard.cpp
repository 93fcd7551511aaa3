#include "com/guard.h"

#include <new>

namespace com {

HRESULT status_of_current_exception(HRESULT otherwise) noexcept {
    try {
        throw;
    } catch (const status_exception& failure) {
        return failure.status();
    } catch (const std::bad_alloc&) {
        return E_OUTOFMEMORY;
    } catch (...) {
        return otherwise;
    }
}

} // namespace com
