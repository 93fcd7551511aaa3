#pragma once

#include "vfs/exceptions.h"

#include <stdexcept>
#include <string>

namespace tour {

/// Ends the tour with `failure` unless `holds`.
inline void require(bool holds, const char* failure) {
    if (!holds) {
        throw std::runtime_error(failure);
    }
}

/// Ends the tour with `failure` unless the store refuses `operation`.
template <class Operation>
void require_refused(const Operation& operation, const char* failure) {
    try {
        operation();
    } catch (const vfs::exception&) {
        return;
    }
    throw std::runtime_error(failure);
}

} // namespace tour
