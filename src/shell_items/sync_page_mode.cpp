#include "shell_items/sync_page_mode.h"

#include <windows.h>

#include <cstdint>

namespace shell {

namespace {

/// One number for each thread. A thread without a slot has the mode 0.
class thread_number {
public:
    thread_number() noexcept : slot_(::TlsAlloc()) {}

    thread_number(const thread_number&) = delete;
    thread_number& operator=(const thread_number&) = delete;

    ~thread_number() { ::TlsFree(slot_); }

    void set(int value) const noexcept {
        ::TlsSetValue(slot_, reinterpret_cast<void*>(static_cast<std::intptr_t>(value)));
    }

    int get() const noexcept {
        return static_cast<int>(reinterpret_cast<std::intptr_t>(::TlsGetValue(slot_)));
    }

private:
    DWORD slot_;
};

const thread_number current_mode;

} // namespace

int get_sync_page_mode() noexcept {
    return current_mode.get();
}

sync_page_mode_scope::sync_page_mode_scope(int mode) noexcept {
    current_mode.set(mode);
}

sync_page_mode_scope::~sync_page_mode_scope() {
    current_mode.set(sync_mode_of_bindings);
}

} // namespace shell
