#include "utils/named_mutex.h"

#include "utils/exceptions.h"

#include <windows.h>

#include <exception>
#include <source_location>

namespace utils {

named_mutex::named_mutex(const std::wstring& name)
    : m_win_mutex(::CreateMutexW(nullptr, FALSE, name.c_str())) {
    if (m_win_mutex == nullptr) {
        throw system_error_exception(std::source_location::current().function_name(),
                                     "::CreateMutexW(NULL, FALSE, name)", ::GetLastError());
    }
}

named_mutex::~named_mutex() noexcept(false) {
    if (!::CloseHandle(m_win_mutex) && std::uncaught_exceptions() == 0) {
        throw system_error_exception(std::source_location::current().function_name(),
                                     "::CloseHandle(m_win_mutex)", ::GetLastError());
    }
}

void named_mutex::lock() {
    constexpr auto call = "::WaitForSingleObject(m_win_mutex, INFINITE)";
    switch (::WaitForSingleObject(m_win_mutex, INFINITE)) {
    case WAIT_TIMEOUT:
        throw system_error_exception(std::source_location::current().function_name(), call);
    case WAIT_FAILED:
        throw system_error_exception(std::source_location::current().function_name(), call,
                                     ::GetLastError());
    default:
        break;
    }
}

void named_mutex::unlock() {
    if (!::ReleaseMutex(m_win_mutex)) {
        throw system_error_exception(std::source_location::current().function_name(),
                                     "::ReleaseMutex(m_win_mutex)", ::GetLastError());
    }
}

mutex_hold::~mutex_hold() {
    try {
        mutex_.unlock();
    } catch (const system_error_exception&) {
        return;
    }
}

} // namespace utils
