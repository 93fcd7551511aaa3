#include "module/thread_state.h"

#include <windows.h>

#include <fibersapi.h>

#include <atomic>
#include <cstdlib>
#include <exception>

namespace {

/// The exceptions that a thread handles, and how many it has raised: the form is fixed by the C++
/// ABI for all run-time libraries.
struct exception_globals {
    void* caught;
    unsigned int uncaught;
};

DWORD slot = FLS_OUT_OF_INDEXES;

void WINAPI free_globals(void* globals) {
    std::free(globals);
}

/// The progress of one `pthread_once_t`, which begins as 0.
enum once_state : long { untouched, running, finished };

SRWLOCK once_lock = SRWLOCK_INIT;
CONDITION_VARIABLE once_changed = CONDITION_VARIABLE_INIT;

void set_once(std::atomic_ref<long> state, once_state value) noexcept {
    ::AcquireSRWLockExclusive(&once_lock);
    state.store(value);
    ::ReleaseSRWLockExclusive(&once_lock);
    ::WakeAllConditionVariable(&once_changed);
}

} // namespace

namespace module {

bool thread_state::create() noexcept {
    slot = ::FlsAlloc(&free_globals);
    return slot != FLS_OUT_OF_INDEXES;
}

void thread_state::destroy() noexcept {
    ::FlsFree(slot);
}

} // namespace module

extern "C" {

// In the place of the run-time library's own, which the linker then leaves out.
exception_globals* __cxa_get_globals() {
    void* globals = ::FlsGetValue(slot);
    if (globals == nullptr) {
        globals = std::calloc(1, sizeof(exception_globals));
        if (globals == nullptr || !::FlsSetValue(slot, globals)) {
            std::terminate();
        }
    }
    return static_cast<exception_globals*>(globals);
}

exception_globals* __cxa_get_globals_fast() {
    return __cxa_get_globals();
}

// In the place of pthread_once, by the linker: guards of local static objects and the C++ library's
// locales begin with it.
int __wrap_pthread_once(long* control, void (*routine)()) {
    const std::atomic_ref<long> state(*control);
    if (state.load() == finished) {
        return 0;
    }
    ::AcquireSRWLockExclusive(&once_lock);
    while (state.load() == running) {
        ::SleepConditionVariableSRW(&once_changed, &once_lock, INFINITE, 0);
    }
    const bool ours = state.load() == untouched;
    if (ours) {
        state.store(running);
    }
    ::ReleaseSRWLockExclusive(&once_lock);
    if (!ours) {
        return 0;
    }
    try {
        routine();
    } catch (...) {
        set_once(state, untouched);
        throw;
    }
    set_once(state, finished);
    return 0;
}
}
