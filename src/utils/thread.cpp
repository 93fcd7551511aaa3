#include "utils/thread.h"

#include "utils/exceptions.h"
#include "utils/module.h"

#include <source_location>
#include <utility>

namespace utils {

pool_thread::pool_thread(std::function<void()> body) : body_(std::move(body)) {
    TP_CALLBACK_ENVIRON environment;
    InitializeThreadpoolEnvironment(&environment);
    SetThreadpoolCallbackLibrary(&environment, own_module());
    SetThreadpoolCallbackRunsLong(&environment);
    work_ = CreateThreadpoolWork(&pool_thread::run, this, &environment);
    const DWORD error = GetLastError();
    DestroyThreadpoolEnvironment(&environment);
    if (work_ == nullptr) {
        throw system_error_exception(std::source_location::current().function_name(),
                                     "::CreateThreadpoolWork(run, this, &environment)", error);
    }
    SubmitThreadpoolWork(work_);
}

pool_thread::~pool_thread() {
    join();
    CloseThreadpoolWork(work_);
}

void pool_thread::join() noexcept {
    WaitForThreadpoolWorkCallbacks(work_, FALSE);
}

void CALLBACK pool_thread::run(PTP_CALLBACK_INSTANCE, void* self, PTP_WORK) {
    try {
        static_cast<pool_thread*>(self)->body_();
    } catch (...) {
        // A body reports its own failures; whatever else it raised must not end the host.
        return;
    }
}

} // namespace utils
