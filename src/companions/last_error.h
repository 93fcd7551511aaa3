#pragma once

#include "utils/exceptions.h"

#include <windows.h>

#include <source_location>

namespace companions {

/// Raises what `GetLastError` tells of `call` as a `system_error_exception` of the caller.
[[noreturn]] inline void
raise_last_error(const char* call,
                 const std::source_location& where = std::source_location::current()) {
    throw utils::system_error_exception(where.function_name(), call, GetLastError());
}

} // namespace companions
