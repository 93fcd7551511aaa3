#include "utils/thread.h"

#include "utils/exceptions.h"
#include "utils/module.h"

#include <memory>
#include <source_location>
#include <utility>

namespace utils {

namespace {

/// Of callbacks that hold this module and may block for long.
class environment {
public:
    environment() noexcept {
        InitializeThreadpoolEnvironment(&value_);
        SetThreadpoolCallbackLibrary(&value_, own_module());
        SetThreadpoolCallbackRunsLong(&value_);
    }

    environment(const environment&) = delete;
    environment& operator=(const environment&) = delete;

    ~environment() { DestroyThreadpoolEnvironment(&value_); }

    TP_CALLBACK_ENVIRON* get() noexcept { return &value_; }

private:
    TP_CALLBACK_ENVIRON value_;
};

void CALLBACK run_alone(PTP_CALLBACK_INSTANCE, void* body) {
    try {
        (*std::unique_ptr<std::function<void()>>(static_cast<std::function<void()>*>(body)))();
    } catch (...) {
        // As below: nobody is left who could be told.
        return;
    }
}

} // namespace

pool_thread::pool_thread(std::function<void()> body) : body_(std::move(body)) {
    environment made;
    work_ = CreateThreadpoolWork(&pool_thread::run, this, made.get());
    const DWORD error = GetLastError();
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

void start_pool_work(std::function<void()> body) {
    environment made;
    auto owned = std::make_unique<std::function<void()>>(std::move(body));
    if (!TrySubmitThreadpoolCallback(&run_alone, owned.get(), made.get())) {
        throw system_error_exception(std::source_location::current().function_name(),
                                     "::TrySubmitThreadpoolCallback(run, body, &environment)",
                                     GetLastError());
    }
    static_cast<void>(owned.release());
}

} // namespace utils
