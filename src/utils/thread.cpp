#include "utils/thread.h"

#include "utils/exceptions.h"

#include <memory>
#include <source_location>

namespace utils {

namespace {

struct thread_record {
    std::function<void()> body;
    HMODULE module = nullptr;
};

void run_guarded(std::unique_ptr<thread_record> record) noexcept {
    try {
        record->body();
    } catch (...) {
        // A body reports its own failures; whatever else it raised must not end the host.
        return;
    }
}

DWORD WINAPI thread_top(void* argument) {
    auto record = std::unique_ptr<thread_record>(static_cast<thread_record*>(argument));
    const HMODULE module = record->module;
    run_guarded(std::move(record));
    FreeLibraryAndExitThread(module, 0);
}

HMODULE reference_own_module() {
    HMODULE module = nullptr;
    if (!GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS,
                            reinterpret_cast<const wchar_t*>(&thread_top), &module)) {
        throw system_error_exception(std::source_location::current().function_name(),
                                     "::GetModuleHandleExW(FROM_ADDRESS, top, &module)",
                                     GetLastError());
    }
    return module;
}

} // namespace

unique_handle start_thread(std::function<void()> body) {
    auto record = std::make_unique<thread_record>(std::move(body), reference_own_module());
    unique_handle thread(CreateThread(nullptr, 0, &thread_top, record.get(), 0, nullptr));
    if (!thread) {
        const DWORD error = GetLastError();
        FreeLibrary(record->module);
        throw system_error_exception(std::source_location::current().function_name(),
                                     "::CreateThread(NULL, 0, top, record, 0, NULL)", error);
    }
    static_cast<void>(record.release());
    return thread;
}

} // namespace utils
