#include "companions/single_instance.h"

#include "companions/last_error.h"
#include "companions/user_security.h"

namespace companions {

single_instance::single_instance(const wchar_t* mutex_name)
    : mutex_(CreateMutexW(user_security().attributes(), FALSE, mutex_name)) {
    if (!mutex_) {
        raise_last_error("::CreateMutexW(attributes, FALSE, mutex_name)");
    }
    const DWORD result = WaitForSingleObject(mutex_.get(), 0);
    if (result == WAIT_FAILED) {
        raise_last_error("::WaitForSingleObject(mutex, 0)");
    }
    owned_ = result != WAIT_TIMEOUT;
}

void single_instance::release() noexcept {
    if (owned_) {
        ReleaseMutex(mutex_.get());
        owned_ = false;
    }
    mutex_.reset();
}

} // namespace companions
