#include "com/worker.h"

#include "com/apartment.h"
#include "com/guard.h"
#include "utils/unique_handle.h"

#include <shlwapi.h>

#include <memory>
#include <optional>

namespace com {

namespace {

struct module_traits {
    using pointer = HMODULE;

    static pointer none() noexcept { return nullptr; }

    static void close(pointer value) noexcept { ::FreeLibrary(value); }
};

struct pool_wait_traits {
    using pointer = PTP_WAIT;

    static pointer none() noexcept { return nullptr; }

    static void close(pointer value) noexcept { ::CloseThreadpoolWait(value); }
};

/// One worker: what its thread needs, and what watches over the thread's end.
///
/// The thread itself cannot give back the module: its last instructions are this module's own, and
/// FreeLibraryAndExitThread would keep it from returning to the shell, which then lets the process
/// go. So the platform's pool waits for its end and gives the module back.
class worker {
public:
    worker(std::function<void()> body, std::function<void()> failed);

    /// Answers whether the thread runs. It owns the worker then.
    static bool start(std::unique_ptr<worker> self) noexcept;

private:
    static DWORD WINAPI run(void* self) noexcept;
    static void CALLBACK finish(PTP_CALLBACK_INSTANCE instance, void* self, PTP_WAIT,
                                TP_WAIT_RESULT) noexcept;

    void work() noexcept;
    void work_in_apartment();
    void give_to_pool() noexcept;

    std::function<void()> body_;
    std::function<void()> failed_;
    utils::unique_resource<module_traits> module_;
    utils::unique_resource<pool_wait_traits> end_;
    utils::unique_handle thread_;
};

worker::worker(std::function<void()> body, std::function<void()> failed)
    : body_(std::move(body)), failed_(std::move(failed)),
      end_(::CreateThreadpoolWait(&worker::finish, this, nullptr)) {
    if (!end_ || !::GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS,
                                       reinterpret_cast<LPCWSTR>(&worker::run), module_.put())) {
        throw status_exception(E_FAIL);
    }
}

bool worker::start(std::unique_ptr<worker> self) noexcept {
    if (!::SHCreateThread(&worker::run, self.get(), CTF_PROCESS_REF, nullptr)) {
        return false;
    }
    static_cast<void>(self.release());
    return true;
}

DWORD WINAPI worker::run(void* self) noexcept {
    auto* const running = static_cast<worker*>(self);
    running->work();
    running->give_to_pool();
    return 0;
}

void worker::work() noexcept {
    try {
        work_in_apartment();
    } catch (...) {
        // Whatever leaves it: nobody is left who could be told.
        guard(failed_);
    }
    failed_ = nullptr;
}

void worker::work_in_apartment() {
    std::optional<apartment> own;
    try {
        own.emplace();
    } catch (const status_exception&) {
        throw worker_exception(L"Com initialize failed");
    }
    // Destroyed before the apartment, also when it throws.
    const auto body = std::move(body_);
    body();
}

void worker::give_to_pool() noexcept {
    const HANDLE process = ::GetCurrentProcess();
    if (::DuplicateHandle(process, ::GetCurrentThread(), process, thread_.put(), SYNCHRONIZE, FALSE,
                          0)) {
        ::SetThreadpoolWait(end_.get(), thread_.get(), nullptr);
    }
    // Otherwise nobody sees the thread end, and the module stays for the life of the process.
}

void CALLBACK worker::finish(PTP_CALLBACK_INSTANCE instance, void* self, PTP_WAIT,
                             TP_WAIT_RESULT) noexcept {
    const std::unique_ptr<worker> ended(static_cast<worker*>(self));
    ::FreeLibraryWhenCallbackReturns(instance, ended->module_.release());
}

} // namespace

HRESULT start_worker(std::function<void()> body, std::function<void()> failed) noexcept {
    return guard([&] {
        return worker::start(std::make_unique<worker>(std::move(body), std::move(failed))) ? S_OK
                                                                                           : E_FAIL;
    });
}

} // namespace com
